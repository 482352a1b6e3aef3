#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

#include "platform/LineInput.h"

// Lines read from a descriptor that stays the caller's.
class DescriptorLineInput final : public LineInput {
public:
    explicit DescriptorLineInput(int openDescriptor);

    std::optional<std::string_view> nextLine() override;

private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    void releaseLargeBuffer();
    bool readMore();
    void makeRoom();
    void moveToFront();
    void resize(std::size_t newCapacity);
    void passOverLine();

    const int descriptor;
    // What was read and not yet handed out is [begin, end); the room behind end always includes the padding.
    std::unique_ptr<char, Free> bytes;
    std::size_t capacity = 0;
    std::size_t begin = 0;
    std::size_t end = 0;
};
