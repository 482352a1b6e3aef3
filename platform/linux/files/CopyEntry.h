#pragma once

#include <sys/stat.h>

#include "platform/linux/Descriptor.h"

// Copies of single items within open directories (AT_FDCWD serves too). Failures are thrown as std::system_error.

struct stat attributesOfEntry(int directory, const char* name); // of the entry itself, links not followed

// Copies anything but a folder to a name that is free (EEXIST): a file with its data, a link as a link, a FIFO as an
// empty one. Sockets and devices are refused (ENOTSUP); nothing but regular files is ever opened.
void copyEntry(int sourceDirectory, const char* sourceName, int destinationDirectory, const char* destinationName);

// Copies the data and all that belongs to it into an open file that is empty.
void copyRegularFile(int sourceDirectory, const char* sourceName, Descriptor destination);
