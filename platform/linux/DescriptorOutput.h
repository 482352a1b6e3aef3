#pragma once

#include <sys/types.h>

#include "platform/Output.h"
#include "platform/linux/Descriptor.h"

// Writes to a descriptor that stays the caller's. A pipe is made as large as the system permits, so that a large
// envelope does not wait for its reader at every 64 KB. A slow reader is waited for; but once the other end of the
// input is closed, five seconds in which nothing is read mean that nobody reads any more.
class DescriptorOutput final : public Output {
public:
    explicit DescriptorOutput(int openDescriptor, int inputDescriptor = -1);

    void write(std::string_view bytes) override;

private:
    ssize_t writeSome(std::string_view bytes) const;
    bool waitForRoom() const;

    int descriptor;
    const int input;
    Descriptor ownPipe{};
    bool isSocket = false;
    bool isClosed = false;
};
