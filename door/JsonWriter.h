#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mp4 {

/// Whether every byte belongs to well-formed UTF-8, so that Json text says the same bytes again.
bool IsUtf8(std::string_view bytes);

/// Appends JSON (RFC 8259) to a text, member by member. The caller keeps objects and lists balanced
/// and gives each member of an object a name first.
///
/// The text is valid for any bytes: each byte of a string that is not part of well-formed UTF-8
/// becomes U+FFFD, and control characters, quotes and backslashes are escaped. Numbers are written
/// with all their digits; those above 2^53 are exact in the text, whatever a reader makes of them.
/// May throw bad_alloc.
class JsonWriter {
 public:
  enum class Form {
    kLine,      ///< no white space at all
    kIndented,  ///< a line a member, two spaces a level
  };

  explicit JsonWriter(std::string* text, Form form = Form::kLine) : text_(text), form_(form) {}

  void BeginObject() { Begin('{'); }
  void EndObject() { End('}'); }
  void BeginArray() { Begin('['); }
  void EndArray() { End(']'); }
  /// The name of the member that comes next.
  void Name(std::string_view name);

  void String(std::string_view value);
  void Unsigned(std::uint64_t value);
  void Signed(std::int64_t value);
  /// The shortest digits that read back as `value`; null when it is no finite number.
  void Real(double value);
  void Bool(bool value);
  void Null();

  /// Name and value in one.
  void Member(std::string_view name, std::string_view value) { Name(name), String(value); }
  void Member(std::string_view name, const char* value) { Name(name), String(value); }
  void Member(std::string_view name, std::uint64_t value) { Name(name), Unsigned(value); }
  void Member(std::string_view name, std::uint32_t value) { Name(name), Unsigned(value); }
  void Member(std::string_view name, std::int64_t value) { Name(name), Signed(value); }
  void Member(std::string_view name, bool value) { Name(name), Bool(value); }

 private:
  void Begin(char bracket);
  void End(char bracket);
  /// What stands between the last value and the next.
  void Separate();
  void NewLine();
  void Quote(std::string_view value);

  std::string* text_;
  Form form_;
  std::vector<bool> hasMember_;  ///< by open object or list
  bool named_ = false;           ///< a name was written, its value not yet
};

}  // namespace mp4
