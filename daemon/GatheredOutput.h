#pragma once

#include <string>
#include <string_view>

#include "platform/Output.h"

// Hands many small lines on in few writes: a system call for each of a thousand lines, with the reader woken each time,
// costs more than to make them. What is left goes with the object, also when something failed on the way.
class GatheredOutput final : public Output {
public:
    explicit GatheredOutput(Output& nextOutput) : output(nextOutput) {}
    GatheredOutput(const GatheredOutput&) = delete;
    ~GatheredOutput() override { output.write(lines); }

    void write(std::string_view bytes) override {
        lines += bytes;
        if (lines.size() < enough) return;
        output.write(lines);
        lines.clear();
    }

private:
    static constexpr std::size_t enough = 32 * 1024;

    Output& output;
    std::string lines{};
};
