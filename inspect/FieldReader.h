#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "inspect/BoxFields.h"

namespace mp4 {

/// Reads the fields of one box in the order of the standard's table and keeps each under its name.
/// A field that the box has no bytes for is left out.
class FieldReader {
 public:
  FieldReader(BoxTree* tree, BoxId id) : tree_(tree), id_(id), view_(tree->Payload(id)) {}

  /// Version and flags; flags are shown when they are not zero.
  void Full();
  std::uint8_t Version() const { return full_.version; }
  std::uint32_t Flags() const { return full_.flags; }

  std::uint8_t U8(const char* name) { return Keep(name, view_.U8()); }
  std::uint16_t U16(const char* name) { return Keep(name, view_.U16()); }
  std::uint32_t U24(const char* name) { return Keep(name, view_.U24()); }
  std::uint32_t U32(const char* name) { return Keep(name, view_.U32()); }
  std::uint64_t U64(const char* name) { return Keep(name, view_.U64()); }
  std::int16_t S16(const char* name) { return KeepSigned(name, view_.S16()); }
  std::int32_t S32(const char* name) { return KeepSigned(name, view_.S32()); }
  /// 64 bits in version 1, else 32.
  std::uint64_t ByVersion(const char* name) { return full_.version == 1 ? U64(name) : U32(name); }
  /// Fixed-point numbers: 16.16, 8.8, and signed 2.30 for matrices.
  void Fixed32(const char* name);
  void Fixed16(const char* name);
  /// Seconds since 1904, by version, as a date; "unset" when 0.
  void Time(const char* name);
  void Language(const char* name);
  void Type(const char* name);
  void Types(const char* name);
  /// `n` bytes in hexadecimal digits.
  void Hex(const char* name, std::size_t n);
  /// The 32 digits of a key id or system id, with dashes.
  void Id(const char* name);
  /// A matrix of nine numbers; only one that does something is shown.
  void Matrix();
  /// Bytes up to a zero or the end; and all that is left.
  void Text(const char* name);
  void Rest(const char* name);
  void RestHex(const char* name);
  /// So many rows at most, as long as each is read whole.
  void Rows(const char* name, std::uint64_t count,
            const std::function<std::string(FieldView*)>& row);

  void Show(const char* name, FieldValue value);
  /// Fields that are no use to anybody.
  void Skip(std::size_t n) { view_.Skip(n); }
  FieldView* View() { return &view_; }
  BoxTree* Tree() { return tree_; }
  BoxId Id() const { return id_; }
  std::uint32_t ParentType() const { return tree_->At(tree_->At(id_).parent).type; }

  bool Cut() const { return !view_.Ok(); }
  std::vector<BoxField> Take() { return std::move(fields_); }

 private:
  template <typename Number>
  Number Keep(const char* name, Number value) {
    Show(name, std::uint64_t{value});
    return value;
  }
  template <typename Number>
  Number KeepSigned(const char* name, Number value) {
    Show(name, std::int64_t{value});
    return value;
  }

  BoxTree* tree_;
  BoxId id_;
  FieldView view_;
  VersionAndFlags full_{};
  std::vector<BoxField> fields_;
};

/// Shows the fields of one kind of box; the reader stands at the first byte of the payload.
using FieldParser = void (*)(FieldReader* fields);

struct FieldParserRow {
  std::uint32_t type;  ///< mp4::FourCC order
  FieldParser parser;
};

/// The parsers of a family of boxes, null for types that are not in it.
FieldParser MovieFieldParser(std::uint32_t type);
FieldParser TableFieldParser(std::uint32_t type);
FieldParser FragmentFieldParser(std::uint32_t type);
FieldParser ProtectionFieldParser(std::uint32_t type);
FieldParser CodecFieldParser(std::uint32_t type);
FieldParser ItemFieldParser(std::uint32_t type);
FieldParser MetadataFieldParser(std::uint32_t type);
/// Sample entries, by where they stand.
void SampleEntryFields(FieldReader* fields);
/// A text of QuickTime's user data, whose type is that of a tag.
void UserDataTextFields(FieldReader* fields);
/// A "uuid" box.
void UserTypeFields(FieldReader* fields);
/// A full box whose version and flags are all there is to show.
inline void FullHeaderOnly(FieldReader* fields) { fields->Full(); }

template <std::size_t n>
FieldParser FindParser(const FieldParserRow (&rows)[n], std::uint32_t type) {
  for (const FieldParserRow& row : rows) {
    if (row.type == type) return row.parser;
  }
  return nullptr;
}

}  // namespace mp4
