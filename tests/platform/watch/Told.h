#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/EventStream.h"

// Notifications in words, for tables: "created dir /w/d", "renamed /w/a -> /w/b", "look /w". Files have no word for
// their type, links have "link". The two notifications of a rename become one.
inline std::vector<std::string> told(const EventStreamBatch& batch) {
    using namespace EventStreamFlag;
    static const std::vector<std::pair<std::uint32_t, std::string_view>> words{
        {rootChanged, "rootChanged "}, {itemCreated, "created "},
        {itemRemoved, "removed "},     {itemInodeMetaMod, "attributes "},
        {itemRenamed, "renamed "},     {itemModified, "modified "},
        {itemIsDir, "dir "},           {itemIsSymlink, "link "},
    };
    std::vector<std::string> result;
    for (std::size_t i = 0; i < batch.size(); ++i) {
        std::string text = batch[i].flags == 0 ? "look " : "";
        for (const auto& [flag, word] : words) {
            if (batch[i].flags & flag) text += word;
        }
        text += *batch[i].path;
        if (batch[i].flags & itemRenamed) {
            const bool isPair = i + 1 < batch.size() && batch[i + 1].flags == batch[i].flags && batch[i].fileID &&
                                batch[i + 1].fileID == batch[i].fileID;
            text += isPair ? " -> " + *batch[i + 1].path : " -> ?";
            i += isPair ? 1 : 0;
        }
        result.push_back(std::move(text));
    }
    return result;
}
