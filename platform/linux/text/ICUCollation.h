#pragma once

#include <unicode/ucol.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/Collation.h"
#include "platform/Environment.h"
#include "platform/linux/text/ASCIISortKeys.h"

// The order of the locale that LC_ALL, LC_COLLATE or LANG names, or the root order of all languages if there is none.
// Case and width are ignored, accents are not; names that differ in nothing else, and bytes that are not UTF-8, are
// told apart by code point. Without ICU's data all names are ordered by code point.
// The collator takes megabytes and is opened at the first use.
class ICUCollation final : public Collation {
public:
    explicit ICUCollation(const Environment& variables) : environment(variables) {}

    void appendSortKey(std::string& keys, std::string_view name) const override;

    // Which language's order it is, for whoever wonders about it.
    struct Locale {
        std::string wanted{};              // as the environment names it; may be empty
        std::optional<std::string> used{}; // as ICU names it; absent without ICU's data
    };
    Locale locale() const;

private:
    struct Close {
        void operator()(UCollator* collator) const { ucol_close(collator); }
    };
    using OwnedCollator = std::unique_ptr<UCollator, Close>;

    static OwnedCollator open(const std::string& locale);
    const UCollator* openedCollator() const;

    const Environment& environment;
    mutable OwnedCollator collator{};
    mutable std::optional<ASCIISortKeys> asciiKeys{}; // where they are the collator's
    mutable std::u16string wideName{};                // kept for the next name
    mutable bool wasOpened = false;
};
