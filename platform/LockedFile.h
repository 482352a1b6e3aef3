#pragma once

#include <string>

// A file that processes share: open and locked as a whole against all others that lock it, from construction to
// destruction. The lock is advisory and belongs to the open file, which is why the file is rewritten where it lies and
// never replaced. Failures are thrown as PlatformError (domain "POSIX", code errno).
class LockedFile {
public:
    // Makes a missing file, for its owner alone; waits as long as another holds the lock, be it in the same thread.
    explicit LockedFile(const std::string& path);
    ~LockedFile();
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    const std::string& contents() const { return bytes; }

    // Truncates the file, writes the new contents with one call and waits until the disk has them. When that fails, the
    // old contents are written back as far as the disk lets them.
    void rewrite(std::string newContents);

private:
    LockedFile(const std::string& openPath, int openDescriptor) : filePath(openPath), descriptor(openDescriptor) {}

    std::string filePath;
    int descriptor;
    std::string bytes{};
};
