// Paths and names of every kind, on a small disk. Normal form, the two directions of a name's text, and the places that
// the rules choose for new items: always free, and always within the root.

#include "fuzz/MemoryDisk.h"
#include "fuzz/Require.h"
#include "fuzz/Split.h"
#include "platform/PlatformError.h"
#include "shared/FileNameText.h"
#include "shared/UTF8.h"
#include "shared/Whitespace.h"
#include "workspace/PathComponents.h"
#include "workspace/WorkspacePathRules.h"

namespace {

void checkText(const std::string& name) {
    const std::string text = textFromFileName(name);
    require(isWellFormedUTF8(text), "the text of a name is not UTF-8");
    require(fileNameFromText(text) == name, "a name does not come back");
    require(isItsOwnText(name) == (text == name), "a name that is its own text is not known as one");
    if (!isWellFormedUTF8(name)) return;
    const std::string fromText = fileNameFromText(name);
    require(fileNameFromText(textFromFileName(fromText)) == fromText, "a text does not lead to one name");
}

void checkParts(const std::string& name) {
    const NameParts parts = nameParts(name);
    require(nameWithSuffix(parts, "") == name, "a name taken apart is another one");
    require(trimmed(trimmed(name)) == trimmed(name), "trimming twice trims more");
}

void checkNormalForm(const std::string& path, const FileManager& files) {
    const std::string normal = normalizedPath(path, files);
    require(normal.starts_with('/') && (normal == "/" || !normal.ends_with('/')), normal);
    for (const std::string& name : split(normal.substr(1), '/'))
        require(name != "." && name != ".." && (!name.empty() || normal == "/"), normal);
    require(standardizedPath(normal) == normal && normalizedPath(normal, files) == normal, normal);
    require(isAtOrWithin(normal, parentPath(normal)) && isAtOrWithin(normal, "/"), normal);
    require(appendingPathComponent(parentPath(normal), lastPathComponent(normal)) == normal || normal == "/", normal);
}

template <typename Rule>
void checkPlace(const FileManager& files, Rule rule) {
    try {
        const std::string place = rule();
        require(!files.itemExists(place), "the place is taken");
        require(isAtOrWithin(place, "/w"), "the place lies outside the root");
        require(standardizedPath(place) == place, "the place is not in normal form");
    } catch (const PlatformError&) {
        // A refusal.
    }
}

void checkPlaces(const EditorDocumentDaemonRequest& request, const FileManager& files) {
    checkPlace(files, [&] {
        return uniqueCreationPath(creationAnchorDirectoryPath(request, "/w", files),
                                  requestedWorkspaceItemName(request, "untitled"), files);
    });
    // A duplicate lies beside its source, and so that of the root outside of it.
    checkPlace(files, [&] {
        const std::string item = requiredItemPath(request, files);
        return item == "/w" ? "/w/duplicate" : uniqueDuplicatePath(item, "/w", files);
    });
    try {
        const std::string item = requiredItemPath(request, files);
        require(isAtOrWithin(resolvedDestinationPath(request, item, "/w", SourceWithinRoot::notRequired, files), "/w"),
                "the destination lies outside the root");
    } catch (const PlatformError&) {
        // A refusal.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 8192) return 0;
    const auto texts = split({reinterpret_cast<const char*>(data), size}, '\n');
    MemoryDisk disk;
    MemoryFileManager files(disk);
    for (const char* path : {"/w", "/w/a", "/w/a b", "/home"}) disk.put(path, FileType::directory);
    for (const char* path : {"/w/a/x.txt", "/w/untitled", "/w/a copy", "/w/x.tar.gz"})
        disk.put(path, FileType::regular);
    disk.put("/w/up", FileType::symbolicLink, "..");
    disk.put("/w/loop", FileType::symbolicLink, "loop");
    for (const std::string& text : texts) {
        checkText(text);
        checkParts(text);
        checkNormalForm(text, files);
    }
    EditorDocumentDaemonRequest request{.rootPath = "/w", .path = texts[0]};
    if (texts.size() > 1) request.name = texts[1];
    if (texts.size() > 2) request.destinationPath = texts[2];
    checkPlaces(request, files);
    return 0;
}
