#include "tools/platform/SafeWrite.h"

#include "tools/modding/Files.h"
#include "tools/modding/Header.h"
#include "tools/platform/Signals.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

const std::string TEMPORARY_SUFFIX = ".lbx-part";
// As many links in a row as the system itself follows before it gives up.
constexpr int LINK_HOPS = 40;
constexpr mode_t NEW_FILE_MODE = 0666; // less the umask, as any program creates files
constexpr mode_t MODE_BITS = 07777;

std::runtime_error cannotWrite(const std::string& target, const std::string& reason)
{
    return std::runtime_error("could not write to '" + target + "' (" + reason + ")");
}

std::runtime_error inTheWay(const std::string& temporary, const std::string& target)
{
    return std::runtime_error("'" + temporary + "' is in the way of writing '" + target +
                              "'; remove it if an interrupted write left it");
}

std::runtime_error alreadyThere(const std::string& target)
{
    return std::runtime_error("'" + target + "' already exists; --force replaces it");
}

std::runtime_error systemFailure(const std::string& target)
{
    return cannotWrite(target, std::strerror(errno));
}

// Where a write to a path lands: the file the path finally names (a link is
// followed to where it points, so that the link stays and its target is
// replaced), and what stands there, if anything.
struct Landing {
    fs::path file;
    std::optional<struct stat> found;

    const struct stat* standing() const { return found ? &*found : nullptr; }
};

Landing landingOf(fs::path path)
{
    for (int hop = 0; hop < LINK_HOPS; ++hop) {
        struct stat status;
        if (::lstat(path.c_str(), &status) != 0)
            return {path, std::nullopt};
        if (!S_ISLNK(status.st_mode))
            return {path, status};
        const fs::path to = fs::read_symlink(path);
        path = to.is_absolute() ? to : path.parent_path() / to;
    }
    throw std::runtime_error("'" + path.string() + "' is behind too many symbolic links");
}

// The temporary file: created here, removed again unless it took the
// target's place.
class Temporary {
public:
    Temporary(std::string path, const std::string& target) : path(std::move(path))
    {
        const HeldSignals made; // a signal delivered as open returns would find the file unregistered
        descriptor = ::open(this->path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, NEW_FILE_MODE);
        if (descriptor >= 0) {
            onSignal.emplace(this->path);
            return;
        }
        if (errno == EEXIST)
            throw inTheWay(this->path, target);
        throw systemFailure(target);
    }

    ~Temporary()
    {
        if (descriptor >= 0)
            ::close(descriptor);
        if (!placed)
            ::unlink(path.c_str());
    }

    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    // The owner first: a change of owner clears the set-user-ID bits.
    void takeOwnerAndMode(const struct stat& original, const std::string& target)
    {
        [[maybe_unused]] const int kept = ::fchown(descriptor, original.st_uid, original.st_gid);
        if (::fchmod(descriptor, original.st_mode & MODE_BITS) != 0)
            throw systemFailure(target);
    }

    // Closes the file, after syncing it to the disk when `durable`.
    void close(bool durable, const std::string& target)
    {
        const int closing = descriptor;
        descriptor = -1;
        if ((durable && ::fsync(closing) != 0) || ::close(closing) != 0)
            throw systemFailure(target);
    }

    void replace(const fs::path& file, const std::string& target)
    {
        if (::rename(path.c_str(), file.c_str()) != 0)
            throw systemFailure(target);
        placed = true;
    }

    std::string path;
    int descriptor = -1;

private:
    bool placed = false;
    // Gone after the file is, so that no signal in between leaves it.
    std::optional<RemovedOnSignal> onSignal;
};

// The rename itself reaches the disk only with the folder's own sync.
void syncFolder(const fs::path& folder)
{
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

void seekTo(int descriptor, off_t offset, const std::string& target)
{
    if (::lseek(descriptor, offset, SEEK_SET) != offset)
        throw systemFailure(target);
}

void writeAll(int descriptor, const char* data, std::size_t size, const std::string& target)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, data, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throw systemFailure(target);
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

// The library writes through a stream that keeps the system's reason to
// itself. When a write of its falls short, a file size limit it reached, or
// a block more behind what it wrote that the disk refuses (full, or over a
// quota), gives that reason; otherwise `otherwise` stands.
std::string roomProblem(int descriptor, const std::string& otherwise)
{
    constexpr off_t PROBE = 4096;
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return otherwise;
    struct rlimit largest;
    if (::getrlimit(RLIMIT_FSIZE, &largest) == 0 && largest.rlim_cur != RLIM_INFINITY &&
        static_cast<rlim_t>(status.st_size) + PROBE > largest.rlim_cur)
        return std::strerror(EFBIG);
    if (::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, status.st_size, PROBE) == 0 || errno == EOPNOTSUPP)
        return otherwise;
    return std::strerror(errno);
}

// Writes `bytes` into a file without a name in the folder of `target`, and
// then names it `target`. Whether it did: the step that names the file fails
// where anything stands there by then, and a file system may have no such
// files or no room; nothing is left behind in either case.
bool linkedWhole(const std::string& target, const std::string& bytes)
{
    const fs::path folder = fs::path(target).parent_path();
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, NEW_FILE_MODE);
    if (descriptor < 0)
        return false;
    const struct Closed {
        int descriptor;
        ~Closed() { ::close(descriptor); }
    } closed{descriptor};
    try {
        writeAll(descriptor, bytes.data(), bytes.size(), target);
    } catch (const std::runtime_error&) {
        return false;
    }
    const std::string unnamed = "/proc/self/fd/" + std::to_string(descriptor);
    return ::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

} // namespace

// A write under way: its temporary file beside where it lands, which takes
// that place once filled, or goes again.
class PendingWrite {
public:
    PendingWrite(Landing landing, bool replacing, const std::string& target)
        : landing(std::move(landing)), replacing(replacing), target(target),
          temporary(this->landing.file.string() + TEMPORARY_SUFFIX, target)
    {
        if (replacing)
            temporary.takeOwnerAndMode(*this->landing.found, target);
    }

    int descriptor() const { return temporary.descriptor; }
    const std::string& temporaryPath() const { return temporary.path; }
    const std::string& targetPath() const { return target; }

    // A file that takes another's place reaches the disk before the rename,
    // and the rename too, so that no crash leaves neither. A new file risks
    // nothing of the user's: it is not made to wait for the disk, which
    // would cost a folder of many files seconds.
    void place()
    {
        temporary.close(replacing, target);
        temporary.replace(landing.file, target);
        if (replacing)
            syncFolder(landing.file.parent_path());
    }

private:
    const Landing landing;
    const bool replacing;
    const std::string target; // what failures name
    Temporary temporary;
};

ArchiveStream::ArchiveStream(std::unique_ptr<PendingWrite> pending) : pending(std::move(pending))
{
    seekTo(this->pending->descriptor(), HEADER_AREA_SIZE, this->pending->targetPath());
}

ArchiveStream::~ArchiveStream() = default;

void ArchiveStream::add(const char* data, std::size_t size)
{
    writeAll(pending->descriptor(), data, size, pending->targetPath());
    sizes.push_back(size);
}

void ArchiveStream::keep()
{
    const std::string area = writtenHeader(sizes);
    seekTo(pending->descriptor(), 0, pending->targetPath());
    writeAll(pending->descriptor(), area.data(), area.size(), pending->targetPath());
    pending->place();
}

void SafeWriter::protect(const std::vector<std::string>& paths)
{
    unfound.insert(unfound.end(), paths.begin(), paths.end());
}

const std::vector<SafeWriter::Input>& SafeWriter::protectedInputs() const
{
    for (const std::string& path : unfound) {
        struct stat status;
        if (::stat(path.c_str(), &status) == 0)
            inputs.push_back({status.st_dev, status.st_ino, path});
    }
    unfound.clear();
    return inputs;
}

bool SafeWriter::existingTarget(const std::string& target, const struct stat* found, Existing existing) const
{
    if (found == nullptr)
        return false;
    requireRegularFile(target);
    for (const Input& input : protectedInputs())
        if (input.device == found->st_dev && input.inode == found->st_ino)
            throw std::runtime_error("'" + target + "' is one of this command's inputs" +
                                     (input.path == target ? "" : " ('" + input.path + "')") + "; it is left as it is");
    if (existing == Existing::Refuse)
        throw alreadyThere(target);
    return true;
}

std::unique_ptr<ArchiveStream> SafeWriter::streamArchive(const std::string& target, Existing existing) const
{
    return std::unique_ptr<ArchiveStream>(new ArchiveStream(begin(target, existing)));
}

bool SafeWriter::remove(const std::string& target) const
{
    struct stat status;
    if (::lstat(target.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    for (const Input& input : protectedInputs())
        if (input.device == status.st_dev && input.inode == status.st_ino)
            return false;
    if (::unlink(target.c_str()) != 0)
        throw std::runtime_error("could not remove '" + target + "' (" + std::strerror(errno) + ")");
    return true;
}

void SafeWriter::check(const std::string& target, Existing existing) const
{
    const Landing landing = landingOf(target);
    const std::string file = landing.file.string();
    existingTarget(file, landing.standing(), existing);
    // Found now, before the work that the write would crown.
    struct stat status;
    if (::lstat((file + TEMPORARY_SUFFIX).c_str(), &status) == 0)
        throw inTheWay(file + TEMPORARY_SUFFIX, target);
}

std::unique_ptr<PendingWrite> SafeWriter::begin(const std::string& target, Existing existing) const
{
    Landing landing = landingOf(target);
    const bool replacing = existingTarget(landing.file.string(), landing.standing(), existing);
    return std::make_unique<PendingWrite>(std::move(landing), replacing, target);
}

void SafeWriter::writeFile(const std::string& target, Existing existing,
                           const std::function<void(int descriptor, const std::string& temporary)>& fill) const
{
    const std::unique_ptr<PendingWrite> pending = begin(target, existing);
    fill(pending->descriptor(), pending->temporaryPath());
    pending->place();
}

void SafeWriter::writeBytes(const std::string& target, const std::string& bytes, Existing existing) const
{
    // Most files a command writes are new, and a new one needs no look at
    // its place first: a file that takes its name in one step either is
    // there whole or was never there. Only when that fails is the place
    // looked at, and the write made as any other, with its checks and words.
    if (linkedWhole(target, bytes))
        return;
    writeFile(target, existing, [&](int descriptor, const std::string&) {
        writeAll(descriptor, bytes.data(), bytes.size(), target);
    });
}

// The library writes through a stream that does not say when the disk
// refused a byte; the header read back shows whether every entry arrived.
void SafeWriter::writeArchive(const std::string& target, File& archive, Existing existing) const
{
    writeFile(target, existing, [&](int descriptor, const std::string& temporary) {
        try {
            archive.write(temporary);
        } catch (const std::exception& e) {
            throw cannotWrite(target, roomProblem(descriptor, e.what()));
        }
        const ArchiveHeader header = readHeader(temporary);
        bool whole = header.valid && header.offsets.size() == archive.size() + 1;
        for (unsigned int i = 0; whole && i < archive.size(); ++i)
            whole = header.offsets[i + 1] - header.offsets[i] == archive[i]->size();
        if (!whole)
            throw cannotWrite(target, roomProblem(descriptor, "the archive did not reach the disk whole"));
    });
}

} // namespace lbxtool
