#include "documents/DocumentLoading.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/text/ICUTextCoding.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::string_literals;

class DocumentLoading : public testing::Test {
protected:
    // The description of the refusal; empty when the file loads.
    std::string refusal(const std::string& name) const {
        return errorOf([&] { loadDocument(directory.path(name), fileManager, textCoding); }).localizedDescription;
    }

    LinuxEnvironment environment;
    LinuxFileManager fileManager{environment};
    ICUTextCoding textCoding;
    TemporaryDirectory directory;
};

TEST_F(DocumentLoading, RefusesInTheOrderOfTheChecks) {
    makeTree(directory.path(), "folder/ fifo| device>/dev/null link-to-fifo>fifo dangling>nowhere");
    writeFile(directory.path("limit"), std::string(8'388'608, 'a'));
    writeFile(directory.path("one more"), std::string(8'388'609, 'a'));
    writeFile(directory.path("sparse"), "");
    std::filesystem::resize_file(directory.path("sparse"), 13'526'630);
    writeFile(directory.path("zero byte"), "abc\0def"s);
    writeFile(directory.path("broken utf-16"), "\xFF\xFE\x00\xD8"s);
    writeFile(directory.path("wide"), "\xFE\xFF\x00\x61"s);
    const std::string notRegular = "Only regular files are supported in the in-app editor.";
    const struct {
        std::string name;
        std::string refusal;
    } cases[] = {
        {"missing", "The file could not be found."},
        {"dangling", "The file could not be found."},
        {"limit\0more"s, "The file could not be found."},
        {std::string(300, 'n'), "The file could not be found."},
        {"limit/below", "The file could not be found."},
        {"folder", notRegular},
        {"fifo", notRegular},
        {"link-to-fifo", notRegular},
        {"device", notRegular},
        {"limit", ""},
        {"one more", "This file is too large for the in-app editor (8.0 MB > 8.0 MB)."},
        {"sparse", "This file is too large for the in-app editor (12.9 MB > 8.0 MB)."},
        {"zero byte", "Binary files are not supported in the in-app editor."},
        {"broken utf-16", "Failed to decode this text file."},
        {"wide", ""},
    };
    for (const auto& row : cases) EXPECT_EQ(refusal(row.name), row.refusal) << row.name;
}

TEST_F(DocumentLoading, AnUnreadableFileIsRefused) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root, to become somebody else";
    writeFile(directory.path("secret"), "text");
    ::chmod(directory.path().c_str(), 0755);
    ::chmod(directory.path("secret").c_str(), 0600);
    ASSERT_EQ(::seteuid(65534), 0);
    const std::string found = refusal("secret");
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(found, "The file is not readable.");
}

TEST_F(DocumentLoading, GivesTextAndMetadataOfOneMoment) {
    writeFile(directory.path("a.txt"), "\xEF\xBB\xBFgr\u00FCn\r\n");
    std::filesystem::create_symlink("a.txt", directory.path("link"));
    const LoadedDocument loaded = loadDocument(directory.path("link"), fileManager, textCoding);
    EXPECT_EQ(loaded.text, "gr\u00FCn\r\n");
    EXPECT_EQ(loaded.format, (DocumentTextFormat{4, ByteOrderMark::utf8, EditorDocumentNewlineStyle::crlf}));
    EXPECT_EQ(loaded.metadata, currentMetadata(directory.path("a.txt"), fileManager));
    EXPECT_EQ(loaded.metadata.fileSize, 10U);
}

TEST_F(DocumentLoading, ZeroBytesNeedAWideEncodingOrItsMark) {
    EXPECT_TRUE(hasUnicodeTextBOM("\xFF\xFE"s));
    EXPECT_TRUE(hasUnicodeTextBOM("\0\0\xFE\xFF"s));
    EXPECT_FALSE(hasUnicodeTextBOM("\xEF\xBB\xBF"s));
    EXPECT_FALSE(hasUnicodeTextBOM("\0\0\xFE"s));
    for (const std::uint64_t wide :
         {0xAULL, 0x90000100ULL, 0x94000100ULL, 0x8C000100ULL, 0x98000100ULL, 0x9C000100ULL}) {
        EXPECT_TRUE(supportsNullBytesAsText("a\0"s, wide));
    }
    EXPECT_FALSE(supportsNullBytesAsText("a\0"s, 4));
    EXPECT_FALSE(supportsNullBytesAsText("a\0"s, 0));
}

} // namespace
