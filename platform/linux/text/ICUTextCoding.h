#pragma once

#include <memory>
#include <mutex>

#include "platform/TextCoding.h"

class LegacyEncodingDetector;

// Text coding by ICU's converters. UTF-8 needs none of them: it is recognised and copied at the speed of memory.
class ICUTextCoding final : public TextCoding {
public:
    ICUTextCoding();
    ~ICUTextCoding() override;

    std::optional<DetectedText> detect(std::string data) const override;
    std::optional<std::string> encode(std::string_view text, std::uint64_t encodingRawValue,
                                      ByteOrderMark byteOrderMark) const override;

private:
    const LegacyEncodingDetector& legacyEncodings() const;

    // Language tables take a few milliseconds to set up, and most people never open a file that needs them.
    mutable std::once_flag legacyEncodingsOpened;
    mutable std::unique_ptr<const LegacyEncodingDetector> openedLegacyEncodings;
};
