#include "identity/EventNodeIDHint.h"

std::string eventNodeIDHint(std::uint64_t fileNumber) {
    return "number:" + std::to_string(fileNumber);
}
