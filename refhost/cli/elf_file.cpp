// cli/elf_file.cpp: reading the head of a library file without loading it

#include "cli/elf_file.hpp"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>

namespace hvm {
namespace {

using FileHeader = ElfW(Ehdr);
using SegmentHeader = ElfW(Phdr);
using DynamicEntry = ElfW(Dyn);
using VersionDefinition = ElfW(Verdef);
using VersionName = ElfW(Verdaux);
using NoteHeader = ElfW(Nhdr);

constexpr std::uint32_t version_note_type = 1;

/// The bytes of a file, read with a check of every bound.
class ElfImage {
 public:
  explicit ElfImage(const std::string& path) : bytes_(read(path)) {
    check_identity();
    read_segments();
  }

  std::vector<std::string> needed() const {
    std::vector<std::string> names;
    for (const DynamicEntry& entry : dynamic_)
      if (entry.d_tag == DT_NEEDED) names.push_back(text(entry.d_un.d_val));
    return names;
  }

  std::vector<std::string> versions() const {
    std::vector<std::string> names;
    auto offset = offset_of(DT_VERDEF);
    const std::size_t count = dynamic_value(DT_VERDEFNUM).value_or(0);
    for (std::size_t i = 0; offset && i < count; ++i) {
      const auto definition = at<VersionDefinition>(*offset);
      names.push_back(text(at<VersionName>(*offset + definition.vd_aux).vda_name));
      if (definition.vd_next == 0) break;
      *offset += definition.vd_next;
    }
    return names;
  }

  /// The text in the note of this owner and the type of versions; empty without one.
  std::string version_note(const std::string& owner) const {
    for (const SegmentHeader& segment : notes_) {
      const std::size_t unit = segment.p_align == 8 ? 8 : 4;
      const auto padded = [&](std::size_t size) { return (size + unit - 1) / unit * unit; };
      const std::size_t end = segment.p_offset + std::min<std::size_t>(segment.p_filesz, bytes_.size());
      for (std::size_t place = segment.p_offset; place < end;) {
        const auto note = at<NoteHeader>(place);
        const std::size_t content = place + sizeof(note) + padded(note.n_namesz);
        if (note.n_type == version_note_type && text_of(place + sizeof(note), note.n_namesz) == owner)
          return text_of(content, note.n_descsz);
        place = content + padded(note.n_descsz);
      }
    }
    return {};
  }

 private:
  static std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ElfError("it cannot be opened for reading");
    std::string bytes;
    std::array<char, 65536> piece;
    while (file.read(piece.data(), piece.size()) || file.gcount() > 0)
      bytes.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    if (file.bad()) throw ElfError("it cannot be read");
    return bytes;
  }

  template <class T>
  T at(std::size_t offset) const {
    if (offset > bytes_.size() || bytes_.size() - offset < sizeof(T)) throw ElfError("its ELF structure is cut off");
    T value;
    std::memcpy(&value, bytes_.data() + offset, sizeof(T));
    return value;
  }

  void check_identity() {
    const bool is_elf = bytes_.size() >= sizeof(FileHeader) && std::memcmp(bytes_.data(), ELFMAG, SELFMAG) == 0;
    if (!is_elf) throw ElfError("it is not an ELF shared object");
    header_ = at<FileHeader>(0);
    const FileHeader own = own_header();
    const bool is_for_this_machine =
        header_.e_ident[EI_CLASS] == own.e_ident[EI_CLASS] && header_.e_machine == own.e_machine;
    if (!is_for_this_machine) throw ElfError("it is an ELF file for another machine");
    if (header_.e_type != ET_DYN) throw ElfError("it is an ELF file, but no shared object");
  }

  static FileHeader own_header() {
    std::ifstream self("/proc/self/exe", std::ios::binary);
    FileHeader header = {};
    char bytes[sizeof(FileHeader)] = {};
    if (!self.read(bytes, sizeof(bytes))) throw ElfError("the running program cannot be read for comparison");
    std::memcpy(&header, bytes, sizeof(header));
    return header;
  }

  void read_segments() {
    for (std::size_t i = 0; i < header_.e_phnum; ++i) {
      const auto segment = at<SegmentHeader>(header_.e_phoff + i * header_.e_phentsize);
      if (segment.p_type == PT_LOAD) take_load(segment);
      if (segment.p_type == PT_DYNAMIC) read_dynamic(segment);
      if (segment.p_type == PT_NOTE) notes_.push_back(segment);
    }
  }

  /// The loader maps these bytes; behind the end of the file, reading them would be a fault.
  void take_load(const SegmentHeader& segment) {
    const bool is_whole = segment.p_offset <= bytes_.size() && bytes_.size() - segment.p_offset >= segment.p_filesz;
    if (!is_whole) throw ElfError("its ELF structure is cut off");
    loads_.push_back(segment);
  }

  void read_dynamic(const SegmentHeader& segment) {
    for (std::size_t i = 0; i < segment.p_filesz / sizeof(DynamicEntry); ++i) {
      dynamic_.push_back(at<DynamicEntry>(segment.p_offset + i * sizeof(DynamicEntry)));
      if (dynamic_.back().d_tag == DT_NULL) return;
    }
  }

  std::optional<std::size_t> dynamic_value(decltype(DynamicEntry::d_tag) tag) const {
    for (const DynamicEntry& entry : dynamic_)
      if (entry.d_tag == tag) return entry.d_un.d_val;
    return std::nullopt;
  }

  std::optional<std::size_t> file_offset(std::size_t address) const {
    for (const SegmentHeader& load : loads_)
      if (address >= load.p_vaddr && address - load.p_vaddr < load.p_filesz)
        return load.p_offset + (address - load.p_vaddr);
    return std::nullopt;
  }

  std::optional<std::size_t> offset_of(decltype(DynamicEntry::d_tag) tag) const {
    const auto address = dynamic_value(tag);
    return address ? file_offset(*address) : std::nullopt;
  }

  /// A text of the dynamic string table.
  std::string text(std::size_t place) const {
    const auto table = offset_of(DT_STRTAB);
    if (!table) throw ElfError("its ELF structure has no string table");
    const std::size_t offset = *table + place;
    const std::size_t end = offset < bytes_.size() ? bytes_.find('\0', offset) : std::string::npos;
    if (end == std::string::npos) throw ElfError("its ELF structure is cut off");
    return bytes_.substr(offset, end - offset);
  }

  /// The text in `size` bytes, up to a zero among them.
  std::string text_of(std::size_t offset, std::size_t size) const {
    if (offset > bytes_.size() || bytes_.size() - offset < size) throw ElfError("its ELF structure is cut off");
    const std::string text = bytes_.substr(offset, size);
    return text.substr(0, text.find('\0'));
  }

  std::string bytes_;
  FileHeader header_ = {};
  std::vector<SegmentHeader> notes_;
  std::vector<SegmentHeader> loads_;
  std::vector<DynamicEntry> dynamic_;
};

}  // namespace

std::vector<std::string> needed_libraries(const std::string& path) { return ElfImage(path).needed(); }

std::vector<std::string> defined_versions(const std::string& path) { return ElfImage(path).versions(); }

std::string version_note(const std::string& path, const std::string& owner) {
  return ElfImage(path).version_note(owner);
}

}  // namespace hvm
