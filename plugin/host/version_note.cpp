// host/version_note.cpp: the version of the module as a note in its file
//
// The note is no symbol that anybody could look up: `readelf -n` shows it, and a host reads it without loading the
// module. Its owner is the name of the module, its type 1, its content the version as text.

#include <cstddef>
#include <cstdint>

namespace arrayfold {
namespace {

constexpr std::size_t padded(std::size_t size) { return (size + 3) / 4 * 4; }

constexpr char owner[] = "arrayfold";
constexpr char version[] = ARRAYFOLD_VERSION;

/// A note as ELF lays it out: both texts are padded to four bytes, the sizes are those before.
struct VersionNote {
  std::uint32_t owner_size = sizeof(owner);
  std::uint32_t version_size = sizeof(version);
  std::uint32_t type = 1;
  char texts[padded(sizeof(owner)) + padded(sizeof(version))] = {};

  constexpr VersionNote() {
    for (std::size_t i = 0; i < sizeof(owner); ++i) texts[i] = owner[i];
    for (std::size_t i = 0; i < sizeof(version); ++i) texts[padded(sizeof(owner)) + i] = version[i];
  }
};

// The sanitizer would surround the note with bytes of its own, and then the section would hold no note.
#ifdef __clang__
#define UNSURROUNDED clang::no_sanitize("address"),
#else
#define UNSURROUNDED
#endif

// Compilers make a section of notes of one whose name begins so.
[[ UNSURROUNDED gnu::used, gnu::section(".note.arrayfold"), gnu::aligned(4) ]] constexpr VersionNote note;

}  // namespace
}  // namespace arrayfold
