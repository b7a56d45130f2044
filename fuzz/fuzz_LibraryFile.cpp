// The check of a library's file before the system's loader maps it: no bytes upset it, and a file that it lets pass has
// all that its headers name. The loader itself gets none of these files.

#include "FuzzCheck.h"

#include "vxLibraryFile.h"

#include <cstdint>
#include <cstring>
#include <elf.h>
#include <link.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

__extension__ using Wide = unsigned __int128;

// A file in memory that has a path.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size) : _descriptor(memfd_create("library", MFD_CLOEXEC)) {
    vx::fuzz::require(_descriptor >= 0 && write(_descriptor, data, size) == static_cast<ssize_t>(size), "no file");
  }
  ~MemoryFile() { close(_descriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string getPath() const { return "/proc/self/fd/" + std::to_string(_descriptor); }

 private:
  int _descriptor;
};

template <class Record>
bool copyAt(const std::uint8_t* data, std::size_t size, Wide offset, Record& record) {
  if (offset + sizeof record > size) return false;
  std::memcpy(&record, data + static_cast<std::size_t>(offset), sizeof record);
  return true;
}

// Whether the headers, and all segments with something in the file, lie within it.
bool isWhole(const std::uint8_t* data, std::size_t size) {
  ElfW(Ehdr) header;
  if (!copyAt(data, size, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return false;
  if (header.e_type != ET_DYN || header.e_phnum == 0) return false;
  if (Wide{header.e_shoff} + Wide{header.e_shnum} * header.e_shentsize > size) return false;
  for (std::size_t i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment;
    if (!copyAt(data, size, Wide{header.e_phoff} + i * sizeof segment, segment)) return false;
    if (segment.p_type != PT_NULL && Wide{segment.p_offset} + segment.p_filesz > size) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(data, size);
  const std::string fault = vx::findLibraryFileFault(file.getPath());
  if (fault.empty()) vx::fuzz::require(isWhole(data, size), "a file that passes has all that its headers name");
  if (!isWhole(data, size)) vx::fuzz::require(!fault.empty() && fault.back() == '.', "a fault is told in a sentence");
  return 0;
}
