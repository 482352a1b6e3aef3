#include <fstream>
#include <iostream>

#include "tools/schema/WireSchema.h"

namespace {

bool write(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::trunc);
    file << text;
    return static_cast<bool>(file.flush());
}

} // namespace

int main(int argumentCount, char* arguments[]) {
    if (argumentCount != 2) {
        std::cerr << "usage: MakeWireSchema folder\n";
        return 64;
    }
    const std::string folder = arguments[1];
    if (!write(folder + "/request.schema.json", requestSchema()) ||
        !write(folder + "/envelope.schema.json", envelopeSchema())) {
        std::cerr << "cannot write to " << folder << '\n';
        return 1;
    }
}
