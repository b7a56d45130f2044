#include "vxLibraryFile.h"

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vx {

namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using FileSize = unsigned long long;

// A file that is open for reading.
class File {
 public:
  explicit File(const std::string& path) : _descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  ~File() {
    if (isOpen()) close(_descriptor);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool isOpen() const { return _descriptor >= 0; }
  int getDescriptor() const { return _descriptor; }

  // Whether so many bytes could be read.
  bool read(void* bytes, std::size_t numBytes, FileSize offset) const {
    auto* const to = static_cast<char*>(bytes);
    std::size_t done = 0;
    while (done < numBytes) {
      const ssize_t count = pread(_descriptor, to + done, numBytes - done, static_cast<off_t>(offset + done));
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return false;
      done += static_cast<std::size_t>(count);
    }
    return true;
  }

 private:
  int _descriptor;
};

bool liesWithin(FileSize offset, FileSize numBytes, FileSize size) {
  return offset <= size && numBytes <= size - offset;
}

// The header of a library that is loaded: this one.
const Header& ownHeader() {
  Dl_info info = {};
  dladdr(reinterpret_cast<const void*>(&findLibraryFileFault), &info);
  return *static_cast<const Header*>(info.dli_fbase);
}

constexpr char truncated[] = "The file is truncated.";

std::string findHeaderFault(const Header& header) {
  const Header& own = ownHeader();
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return "The file is no library.";
  if (header.e_ident[EI_CLASS] != own.e_ident[EI_CLASS] || header.e_ident[EI_DATA] != own.e_ident[EI_DATA] ||
      header.e_machine != own.e_machine) {
    return "The library is for another architecture.";
  }
  if (header.e_type != ET_DYN || header.e_phentsize != sizeof(Segment) || header.e_phnum == 0) {
    return "The file is no library.";
  }
  return {};
}

}  // namespace

bool doesFileExist(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0;
}

std::string findLibraryFileFault(const std::string& path) {
  const File file(path);
  if (!file.isOpen()) return std::string("The file can't be read: ") + std::strerror(errno) + ".";
  struct stat status = {};
  if (fstat(file.getDescriptor(), &status) != 0 || !S_ISREG(status.st_mode)) return "This is no file.";
  const auto size = static_cast<FileSize>(status.st_size);
  if (size == 0) return "The file is empty.";

  Header header;
  const bool isHeaderRead = file.read(&header, sizeof header, 0);
  char start[SELFMAG] = {};
  if (!isHeaderRead) {
    return file.read(start, sizeof start, 0) && std::memcmp(start, ELFMAG, SELFMAG) == 0 ? truncated
                                                                                         : "The file is no library.";
  }
  if (std::string fault = findHeaderFault(header); !fault.empty()) return fault;

  // The table of sections stands at the end of a file, so that a cut anywhere shows.
  if (!liesWithin(header.e_shoff, FileSize{header.e_shnum} * header.e_shentsize, size)) return truncated;
  std::vector<Segment> segments(header.e_phnum);
  if (!liesWithin(header.e_phoff, segments.size() * sizeof(Segment), size) ||
      !file.read(segments.data(), segments.size() * sizeof(Segment), header.e_phoff)) {
    return truncated;
  }
  for (const Segment& segment : segments) {
    if (segment.p_type != PT_NULL && !liesWithin(segment.p_offset, segment.p_filesz, size)) return truncated;
  }
  return {};
}

}  // namespace vx
