#pragma once

#include <unistd.h>

#include <utility>

// Owns a file descriptor and closes it on every road out.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int opened) : number(opened) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }

    explicit operator bool() const { return number >= 0; }
    int get() const { return number; }

    // Closes now, for the caller who must know whether that worked. Returns 0 or -1 with errno, as close does.
    int close() { return ::close(std::exchange(number, -1)); }

private:
    int number = -1;
};
