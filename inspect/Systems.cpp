#include "inspect/Systems.h"

#include <algorithm>

#include "inspect/Misplaced.h"
#include "inspect/SystemNames.h"
#include "io/FourCC.h"
#include "iso/ProtectionSystem.h"
#include "iso/UserType.h"

namespace mp4 {

namespace {

/// Systems kept in a report: the registered ones, each a few times. More than anybody reads, and
/// few enough to compare each new one with all.
constexpr std::size_t kMostSystems = 128;

bool IsKnown(const std::vector<ReportSystem>& systems, const ReportSystem& system) {
  return std::any_of(systems.begin(), systems.end(), [&](const ReportSystem& known) {
    return known.id == system.id && known.payloadSize == system.payloadSize &&
           known.keyIds == system.keyIds;
  });
}

}  // namespace

bool InspectSystem(Findings* findings, BoxId box) {
  BoxTree& tree = findings->Tree();
  const bool plain = tree.At(box).type == FourCC("pssh");
  if (!plain && KindOfUserType(&tree, box) != UserTypeKind::kSystem) return false;
  std::vector<ReportSystem>& systems = findings->Result().systems;
  if (systems.size() >= kMostSystems) return true;
  // The data behind the head is not looked at.
  constexpr std::size_t kUsualHead = 512;
  constexpr std::uint64_t kShortestHead = 20;  // version, flags and the system's id
  ProtectionSystem system;
  if (!ReadProtectionSystem(tree.Payload(box, 0, kUsualHead), &system)) {
    system = {};
    if (!ReadProtectionSystem(tree.Payload(box), &system))
      findings->Remark(box, findings->OffsetOf(box), "a \"pssh\" box ends before its data begins");
  }
  if (tree.At(box).PayloadSize() < kShortestHead) return true;
  const std::uint64_t keys = system.keyIds.empty() ? 0 : 4 + 16 * system.keyIds.size();
  if (CoversBoxOnTheWay(&tree, box, kShortestHead + keys + 4 + system.dataSize))
    findings->Doubt(box, "a \"pssh\" box covers boxes of the movie");
  ReportSystem report{
      system.id, NameOfSystem(system.id), std::move(system.keyIds), system.dataSize, {}};
  if (IsKnown(systems, report)) return true;
  report.boxPath = tree.Path(box);
  systems.push_back(std::move(report));
  return true;
}

}  // namespace mp4
