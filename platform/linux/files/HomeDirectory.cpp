#include "platform/linux/files/HomeDirectory.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace {

// Calls getpwnam_r or getpwuid_r with a buffer that grows until the record fits; some directory services keep very long
// ones.
template <typename Lookup>
std::optional<std::string> recordedHome(const Lookup& lookup) {
    std::vector<char> buffer(1024);
    passwd record{};
    passwd* found = nullptr;
    while (lookup(&record, buffer.data(), buffer.size(), &found) == ERANGE) buffer.resize(buffer.size() * 2);
    if (!found || !found->pw_dir || !*found->pw_dir) return std::nullopt;
    return found->pw_dir;
}

} // namespace

std::optional<std::string> homeDirectory(const Environment& environment, std::string_view userName) {
    if (userName.find('\0') != std::string_view::npos) return std::nullopt;
    if (!userName.empty()) {
        const std::string name(userName);
        return recordedHome([&](passwd* record, char* buffer, std::size_t size, passwd** found) {
            return ::getpwnam_r(name.c_str(), record, buffer, size, found);
        });
    }
    if (auto home = environment.value("HOME"); home && home->starts_with('/')) return home;
    return recordedHome([](passwd* record, char* buffer, std::size_t size, passwd** found) {
        return ::getpwuid_r(::geteuid(), record, buffer, size, found);
    });
}
