#include "platform/linux/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

// The system gives the lowest free number.
void fillStandardDescriptors() {
    int descriptor = STDIN_FILENO;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = ::open("/dev/null", O_RDWR);
    if (descriptor >= 0) ::close(descriptor);
}
