#pragma once

#include <sys/stat.h>

// Gives the copy of a file or folder the source's owner, extended attributes (access lists among them, "security." ones
// not), mode and times, in the only order in which none undoes another. It is the last step: writing would change the
// times again, and the mode may forbid it. Left out is what the user may not do (another owner; then the set-user-ID
// and set-group-ID bits as well) and what the destination's file system cannot hold.
// Both descriptors are open on the items; a failure is thrown as std::system_error.
void copyMetadata(int source, int destination, const struct stat& attributes);

// The same for an item that is not opened: a link (which has no mode of its own) or a FIFO, named within a directory.
void setMetadata(int directory, const char* name, const struct stat& attributes);
