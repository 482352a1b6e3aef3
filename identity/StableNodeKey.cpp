#include "identity/StableNodeKey.h"

#include <cstddef>

#include "identity/Base64.h"

namespace {

constexpr std::string_view dataPrefix = "data:";

std::string canonicalText(const FileIdentifierUUID& uuid) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < uuid.bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += digits[uuid.bytes[i] >> 4];
        text += digits[uuid.bytes[i] & 15];
    }
    return text;
}

struct FormOfIdentifier {
    std::string operator()(std::uint64_t number) const { return "number:" + std::to_string(number); }
    std::string operator()(const FileIdentifierBytes& bytes) const {
        std::string form;
        form.reserve(dataPrefix.size() + bytes.bytes.size());
        (form += dataPrefix) += bytes.bytes;
        return form;
    }
    std::string operator()(const std::string& text) const { return "string:" + text; }
    std::string operator()(const FileIdentifierUUID& uuid) const { return "uuid:" + canonicalText(uuid); }
    std::string operator()(const OpaqueFileIdentifier& opaque) const { return "object:" + opaque.description; }
};

} // namespace

StableNodeKey::StableNodeKey(const FileIdentifier& identifier) : form(std::visit(FormOfIdentifier(), identifier)) {}

StableNodeKey::StableNodeKey(std::uint64_t fileSystemNumber, std::uint64_t fileNumber)
    : form("inode:" + std::to_string(fileSystemNumber) + ":" + std::to_string(fileNumber)) {}

StableNodeKey StableNodeKey::numbered(std::uint32_t number) const {
    if (!form.starts_with(dataPrefix)) return StableNodeKey(form + ":" + std::to_string(number));
    std::string bytes = form;
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift);
    return StableNodeKey(std::move(bytes));
}

std::string StableNodeKey::nodeIDOf(std::string_view stored) {
    if (!stored.starts_with(dataPrefix)) return std::string(stored);
    stored.remove_prefix(dataPrefix.size());
    std::string nodeID;
    nodeID.reserve(dataPrefix.size() + 4 * (stored.size() + 2) / 3);
    nodeID += dataPrefix;
    appendBase64(nodeID, stored);
    return nodeID;
}
