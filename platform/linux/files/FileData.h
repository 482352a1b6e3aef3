#pragma once

#include <sys/types.h>

// Copies the data of an open regular file into a new, empty one, sharing blocks where the file system can. Holes stay
// holes. A file that grows meanwhile is copied up to `size`, one that shrinks up to its end; one whose file system does
// not tell its size in advance is read to its end. A failure is thrown as std::system_error.
void copyFileData(int source, int destination, off_t size);
