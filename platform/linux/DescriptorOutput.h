#pragma once

#include "platform/Output.h"

// Writes to a descriptor that stays the caller's. A pipe is made as large as the system permits, so that a large
// envelope does not wait for its reader at every 64 KB.
class DescriptorOutput final : public Output {
public:
    explicit DescriptorOutput(int openDescriptor);

    void write(std::string_view bytes) override;

private:
    const int descriptor;
    bool isClosed = false;
};
