#include "inspect/HiddenSchemes.h"

#include <algorithm>
#include <string_view>

#include "io/FourCC.h"
#include "iso/ProtectedFormats.h"
#include "iso/UserType.h"

namespace mp4 {

namespace {

constexpr std::size_t kStep = std::size_t{16} << 10;
/// Bytes that a piece shares with the next: what is looked for is shorter.
constexpr std::size_t kOverlap = 15;
constexpr std::string_view kPiffTrackEncryption(
    "\x89\x74\xDB\xCE\x7B\xE7\x4C\x51\x84\xF9\x71\x48\xF9\x88\x25\x54", 16);

/// An entry for protected media: the size of a box, then such a format.
std::string FindEntry(std::string_view text, std::uint64_t left) {
  for (const std::string_view start : {"enc", "drm", "p608", "aavd"}) {
    for (std::size_t at = text.find(start); at != std::string_view::npos;
         at = text.find(start, at + 1)) {
      if (at < 4 || text.size() - at < 4) continue;
      FieldView header(reinterpret_cast<const unsigned char*>(text.data()) + at - 4, 8);
      const std::uint32_t size = header.U32();
      constexpr std::uint32_t kSmallestEntry = 16;
      if (size >= kSmallestEntry && size <= left - (at - 4) &&
          IsForProtectedMedia(KindOfFormat(header.Type())))
        return std::string(text.substr(at, 4));
    }
  }
  return {};
}

std::string FindIn(std::string_view text, std::uint64_t left, bool knownSchemes) {
  for (const std::string_view type : {"sinf", "tenc"}) {
    if (text.find(type) != std::string_view::npos) return std::string(type);
  }
  for (const std::string_view type : {"schm", "schi"}) {
    if (!knownSchemes && text.find(type) != std::string_view::npos) return std::string(type);
  }
  if (text.find(kPiffTrackEncryption) != std::string_view::npos) return "uuid";
  return FindEntry(text, left);
}

}  // namespace

std::string FindHiddenScheme(BoxTree* tree, BoxId entry, bool knownSchemes) {
  const std::uint64_t size = tree->At(entry).PayloadSize();
  for (std::uint64_t at = 0; at < size; at += kStep) {
    FieldView bytes = tree->Payload(entry, at, kStep + kOverlap);
    const std::size_t n = bytes.Left();
    if (n == 0) return {};
    const std::string_view text(reinterpret_cast<const char*>(bytes.Bytes(n)), n);
    std::string found = FindIn(text, size - at, knownSchemes);
    if (!found.empty()) return found;
  }
  return {};
}

bool IsPartOfScheme(BoxTree* tree, BoxId box) {
  switch (tree->At(box).type) {
    case FourCC("schm"):
    case FourCC("schi"):
    case FourCC("tenc"):
    case FourCC("senc"):
    case FourCC("pssh"):
    case FourCC("imif"):
    case FourCC("iKMS"):
    case FourCC("iSFM"):
    case FourCC("iSLT"):
    case FourCC("odkm"):
    case FourCC("odaf"):
    case FourCC("ohdr"):
    case FourCC("adkm"):
    case FourCC("adaf"):
    case FourCC("ahdr"):
    case FourCC("akey"):
    case FourCC("8id "):
    case FourCC("8bdl"):
    case FourCC("marl"):
    case FourCC("mkid"):
    case FourCC("gkey"):
    case FourCC("satr"):
    case FourCC("key "):
    case FourCC("iviv"):
    case FourCC("righ"):
    case FourCC("priv"):
      return true;
    default:
      return KindOfUserType(tree, box) != UserTypeKind::kOther;
  }
}

}  // namespace mp4
