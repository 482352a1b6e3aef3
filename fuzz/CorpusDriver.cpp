// Feeds a fuzzer the files of a folder, one by one, without libFuzzer: so the tests run what fuzzing has found.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 64;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++count;
    }
    std::fprintf(stderr, "%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
