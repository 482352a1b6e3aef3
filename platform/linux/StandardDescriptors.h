#pragma once

// Opens /dev/null for those of input, output and error output that the process was started without. Otherwise what it
// opens next would get their numbers, and be read or written in their place. Comes before anything else is opened.
void fillStandardDescriptors();
