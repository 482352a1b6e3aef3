#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "platform/linux/DescriptorLineInput.h"

namespace {

// Feeds the pieces through a pipe, each with a write of its own, and returns the lines that come out.
std::vector<std::string> linesOf(const std::vector<std::string>& pieces) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe(ends.data()), 0);
    const Descriptor readEnd(ends[0]);
    std::thread writer([writeEnd = Descriptor(ends[1]), &pieces] {
        for (const std::string& piece : pieces) {
            EXPECT_EQ(::write(writeEnd.get(), piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
        }
    });
    std::vector<std::string> lines;
    DescriptorLineInput input(readEnd.get());
    while (const auto line = input.nextLine()) lines.emplace_back(*line);
    writer.join();
    return lines;
}

TEST(LineInput, SplitsAtLineFeedsOnly) {
    using Lines = std::vector<std::string>;
    const std::string large(3'000'000, 'x');
    const std::string fillsBuffer(65'471, 'y');
    const std::string nul("a\0b", 3);
    const struct {
        const char* name;
        Lines pieces;
        Lines lines;
    } cases[] = {
        {"nothing at all", {}, {}},
        {"several lines in one piece", {"a\nb\n\nc\n"}, {"a", "b", "", "c"}},
        {"a line in several pieces", {"a", "b", "c\nd", "\n"}, {"abc", "d"}},
        {"no line feed at the end", {"a\nb"}, {"a", "b"}},
        {"carriage returns and NUL stay", {"a\r\n" + nul + "\n"}, {"a\r", nul}},
        {"a line larger than the buffer, then small ones", {large + "\nb\nc", "\n"}, {large, "b", "c"}},
        {"two large lines in a row", {large + "\n" + large + "\n"}, {large, large}},
        {"a line that just fills the buffer", {fillsBuffer + "\nz\n"}, {fillsBuffer, "z"}},
    };
    for (const auto& row : cases) EXPECT_EQ(linesOf(row.pieces), row.lines) << row.name;
}

} // namespace
