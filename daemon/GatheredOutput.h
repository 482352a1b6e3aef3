#pragma once

#include <string>
#include <string_view>

#include "platform/Output.h"

// Hands each line on as it comes, but many small lines that are made in a row in few writes: a system call for each of
// a thousand lines, with the reader woken each time, costs more than to make them.
class GatheredOutput final : public Output {
public:
    explicit GatheredOutput(Output& nextOutput) : output(nextOutput) {}

    // For as long as such a row is made. What is left goes with the object, also when something failed on the way.
    class Row {
    public:
        explicit Row(GatheredOutput& gatheredOutput) : gathered(gatheredOutput) { gathered.isInRow = true; }
        Row(const Row&) = delete;
        ~Row() {
            gathered.isInRow = false;
            gathered.handOn();
        }

    private:
        GatheredOutput& gathered;
    };

    void write(std::string_view bytes) override {
        if (!isInRow) return output.write(bytes);
        lines += bytes;
        if (lines.size() >= enough) handOn();
    }

private:
    static constexpr std::size_t enough = 32 * 1024;

    void handOn() {
        output.write(lines);
        lines.clear();
    }

    Output& output;
    bool isInRow = false;
    std::string lines{};
};
