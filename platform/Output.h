#pragma once

#include <string_view>

// Where bytes leave the process. Each write is handed to the system whole before the call returns; when nobody reads
// any more, it is dropped. To be called by one thread at a time.
class Output {
public:
    virtual ~Output() = default;

    virtual void write(std::string_view bytes) = 0;
};
