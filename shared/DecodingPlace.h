#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Where in a message the decoder is: a chain of keys and indices on the stack, spelled out only when something fails.
struct DecodingPlace {
    const DecodingPlace* parent{};
    std::string_view key{};
    std::optional<std::size_t> index{};

    DecodingPlace child(std::string_view childKey) const { return {this, childKey, std::nullopt}; }
    DecodingPlace element(std::size_t elementIndex) const { return {this, {}, elementIndex}; }

    std::size_t depth() const { return parent ? parent->depth() + 1 : 0; }

    // "snapshot.version", "workspaceDirectory.nodes[3].name"; empty for the message itself.
    std::string text() const {
        if (!parent) return {};
        if (index) return parent->text() + '[' + std::to_string(*index) + ']';
        const std::string outer = parent->text();
        return outer.empty() ? std::string{key} : outer + '.' + std::string{key};
    }
};
