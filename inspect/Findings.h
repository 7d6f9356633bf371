#pragma once

#include <optional>
#include <string>

#include "inspect/Report.h"
#include "iso/BoxTree.h"

namespace mp4 {

/// What a piece of evidence is about. 0 and empty where it is about no single one.
struct Subject {
  std::optional<std::uint32_t> track;
  std::optional<std::uint32_t> item;
  std::string format;
  std::string scheme;
};

/// Writes into a report what the rooms of the inspection find, each with its place in the tree. The
/// lists are bounded; the verdict does not depend on what was left out of them.
class Findings {
 public:
  /// Both are borrowed.
  Findings(BoxTree* tree, Report* report) : tree_(tree), report_(report) {}

  BoxTree& Tree() { return *tree_; }
  mp4::Report& Result() { return *report_; }

  /// Something is protected, and this box says so.
  void Protect(BoxId box, const Subject& subject, std::string text);
  /// The same where no box of the tree says it.
  void ProtectAt(std::string path, std::optional<std::uint64_t> offset, const Subject& subject,
                 std::string text);
  /// Belongs to protection that another box says.
  void Support(BoxId box, const Subject& subject, std::string text);
  /// Protection could be where nobody could look.
  void Doubt(BoxId box, std::string text);
  void Doubt(BoxId box, std::optional<std::uint64_t> offset, std::string text);
  /// Wrong, but nothing can be hidden there.
  void Remark(BoxId box, std::optional<std::uint64_t> offset, std::string text);
  void Note(std::string text);
  void AddScheme(const std::string& scheme);

  bool IsProtected() const { return protected_; }
  /// Whether there is so much evidence that no more is kept.
  bool IsFull() const;
  /// The first doubt; empty when there is none.
  const std::string& FirstDoubt() const { return firstDoubt_; }
  /// Offset of a box in the file, none inside an inflated movie.
  std::optional<std::uint64_t> OffsetOf(BoxId box) const;

 private:
  void AddProblem(BoxId box, std::optional<std::uint64_t> offset, std::string text, bool mayHide);
  void AddEvidence(Evidence evidence);

  BoxTree* tree_;
  mp4::Report* report_;
  bool protected_ = false;
  std::string firstDoubt_;
};

}  // namespace mp4
