#include "platform/linux/files/AtomicSave.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "platform/linux/TemporaryName.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/KeepMetadata.h"
#include "platform/linux/files/SaveTarget.h"
#include "platform/linux/files/StatAttributes.h"
#include "platform/linux/files/SystemCall.h"

namespace {

// The file that will take the target's place. Until it has, it goes away with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(SaveTarget replaced) : target(std::move(replaced)), name(temporaryName(target.name)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (isNamed) ::unlinkat(target.directory.get(), name.c_str(), 0);
    }

    int descriptor() const { return file.get(); }
    const SaveTarget& replaced() const { return target; }

    // A file without a name leaves no trace if the process dies. Returns false where the file system has none.
    bool createUnnamed() {
        file = Descriptor(::openat(target.directory.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode()));
        return static_cast<bool>(file);
    }
    // Returns false where that is impossible, as without /proc.
    bool linkUnnamed() {
        const std::string self = "/proc/self/fd/" + std::to_string(file.get());
        isNamed = ::linkat(AT_FDCWD, self.c_str(), target.directory.get(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
        return isNamed;
    }

    void createNamed() {
        file = Descriptor(); // on a nearly full disk the unnamed one must give back its space first
        constexpr int flags = O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC;
        file = Descriptor(checked(::openat(target.directory.get(), name.c_str(), flags, mode())));
        isNamed = true;
    }

    // Closing comes first because it is the last to report a lost write, and then the old file must still be there.
    void takePlace() {
        const int closed = file.close();
        if (closed != 0 && errno != EINTR) checked(closed);
        const int directory = target.directory.get();
        checked(::renameat(directory, name.c_str(), directory, target.name.c_str()));
        isNamed = false;
    }

private:
    // Nobody else may look inside before the old file's mode is set; a new file gets what the umask leaves.
    mode_t mode() const { return target.old ? 0600 : 0666; }

    const SaveTarget target;
    const std::string name;
    Descriptor file;
    bool isNamed = false;
};

void writeAll(int descriptor, std::string_view data) {
    while (!data.empty()) {
        const ssize_t count = ::write(descriptor, data.data(), data.size());
        if (count < 0 && errno == EINTR) continue;
        if (count == 0) throw std::system_error(EIO, std::generic_category()); // would go on for ever
        data.remove_prefix(static_cast<std::size_t>(checked(count)));
    }
}

// A file system that knows no flushing says EINVAL; it has nothing more to give.
void flush(int descriptor) {
    int result = 0;
    do result = ::fdatasync(descriptor);
    while (result != 0 && errno == EINTR);
    if (result != 0 && errno != EINVAL) checked(result);
}

FileAttributes fill(int descriptor, std::string_view data, const SaveTarget& target) {
    writeAll(descriptor, data);
    if (target.old) keepMetadata(descriptor, target);
    flush(descriptor);
    // Taken here and not from the path later, so that a foreign write after this one shows as a difference.
    struct stat status {};
    checked(::fstat(descriptor, &status));
    return fileAttributes(status, descriptor);
}

// Runs the step; its failure is thrown as the one of saving the path.
template <typename Step>
auto reportingAsSave(const std::string& path, Step step) {
    constexpr std::string_view action = "save";
    try {
        return step();
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), action, path);
    }
}

class LinuxFileReplacement final : public FileReplacement {
public:
    LinuxFileReplacement(const std::string& savedPath, std::string_view newBytes)
        : path(savedPath), data(newBytes), temporary(saveTarget(cPath(savedPath, "save"))) {
        isUnnamed = temporary.createUnnamed();
        if (isUnnamed) {
            written = fill(temporary.descriptor(), data, temporary.replaced());
        } else {
            prepareNamed();
        }
    }

    FileAttributes attributes() const override { return written; }

    FileAttributes commit() override {
        reportingAsSave(path, [&] {
            if (isUnnamed && !temporary.linkUnnamed()) prepareNamed();
            temporary.takePlace();
        });
        // A failure is not reported: the new file is in place and complete, nothing can take that back, and an error
        // would claim that the old bytes still stand.
        ::fsync(temporary.replaced().directory.get());
        return written;
    }

private:
    // Whatever the unnamed way refuses, the named way tries; it meets a lasting trouble again and reports it.
    void prepareNamed() {
        temporary.createNamed();
        written = fill(temporary.descriptor(), data, temporary.replaced());
    }

    const std::string path;
    const std::string_view data;
    TemporaryFile temporary;
    FileAttributes written{};
    bool isUnnamed = false;
};

} // namespace

std::unique_ptr<FileReplacement> prepareReplacement(const std::string& path, std::string_view data) {
    return reportingAsSave(path, [&] { return std::make_unique<LinuxFileReplacement>(path, data); });
}
