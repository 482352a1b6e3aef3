#pragma once

// Lets the calling thread yield to the others on a busy machine, but never starve: events wait for what it does.
void lowerThreadPriority();
