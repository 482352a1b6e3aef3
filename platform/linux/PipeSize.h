#pragma once

// Asks for the largest pipe that the system permits. Whatever is not a pipe, and a refusal, are left alone.
void enlargePipe(int descriptor);
