#include "inspect/Items.h"

#include <algorithm>

#include "inspect/Misplaced.h"
#include "inspect/SchemeInfo.h"
#include "inspect/Systems.h"
#include "io/FourCC.h"
#include "iso/ItemInfo.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Items kept in a report; all are looked at.
constexpr std::size_t kMostItems = 10000;

struct Item {
  std::uint32_t id;
  std::uint16_t protection;
  std::uint32_t type;
  BoxId box;
  bool isProtected;
  std::string scheme;
};

/// The items of one meta box while they are looked at.
class ItemInspection {
 public:
  ItemInspection(Findings* findings, BoxId meta)
      : findings_(findings), tree_(findings->Tree()), meta_(meta) {}

  std::uint64_t Run() {
    for (BoxId box = tree_.FirstChild(meta_); box != kNoBox; box = tree_.Next(box))
      LookAtChild(box);
    std::stable_sort(items_.begin(), items_.end(),
                     [](const Item& a, const Item& b) { return a.id < b.id; });
    for (Item& item : items_) LookAtProtection(&item);
    CheckInputs();
    SpreadOverReferences();
    CheckPrimary();
    CheckUnusedParameters();
    Publish();
    return items_.size();
  }

 private:
  void LookAtChild(BoxId box) {
    switch (tree_.At(box).type) {
      case FourCC("iinf"):
        LookAtItems(box);
        break;
      case FourCC("ipro"):
        LookAtSchemes(box);
        break;
      case FourCC("iref"):
        LookAtReferences(box);
        break;
      case FourCC("iprp"):
        LookAtProperties(box);
        break;
      case FourCC("pitm"):
        LookAtPrimary(box);
        break;
      case FourCC("iloc"):
        hasLocations_ = true;
        break;
      case FourCC("ipmc"):
        findings_->Doubt(box, "a box of IPMP control, yet no item says what it protects");
        break;
      default:
        if (!InspectSystem(findings_, box)) CheckUnknownBox(findings_, box);
        break;
    }
  }

  void LookAtItems(BoxId iinf) {
    hasItems_ = true;
    constexpr std::uint8_t kLastVersion = 1;
    if (tree_.Payload(iinf, 0, 1).U8() > kLastVersion)
      findings_->Doubt(iinf, "the item information is of an unknown version");
    for (BoxId box = tree_.FirstChild(iinf); box != kNoBox; box = tree_.Next(box)) {
      ItemInfo item;
      if (tree_.At(box).type != FourCC("infe")) {
        findings_->Doubt(box, "the item information holds a box that is no item's");
      } else if (!ReadItemInfo(tree_.Payload(box, 0, 16), &item)) {
        findings_->Doubt(box, "an item's information is cut or of an unknown version");
      } else {
        items_.push_back({item.id, item.protection, item.type, box, false, {}});
      }
    }
  }

  void LookAtSchemes(BoxId ipro) {
    for (BoxId box = tree_.FirstChild(ipro); box != kNoBox; box = tree_.Next(box)) {
      if (tree_.At(box).type != FourCC("sinf"))
        findings_->Doubt(box, "the item protection holds a box that is no scheme");
      sinfs_.push_back(box);
      schemes_.push_back(ReadSchemeInfo(&tree_, box));
    }
  }

  void LookAtReferences(BoxId iref) {
    for (BoxId box = tree_.FirstChild(iref); box != kNoBox; box = tree_.Next(box)) {
      if (tree_.At(box).type != FourCC("dimg")) continue;
      if (!ReadItemReferences(&tree_, box, &derived_))
        findings_->Doubt(box, "the inputs of a derived item are cut");
    }
  }

  /// ItemEncryptionBox "ienc" and ItemAuxiliaryInformationBox "iaux" among the properties:
  /// parameters of encrypted items.
  void LookAtProperties(BoxId iprp) {
    for (BoxId ipco = tree_.Child(iprp, FourCC("ipco")); ipco != kNoBox;
         ipco = tree_.NextOfType(ipco)) {
      if (parameters_ == kNoBox) parameters_ = tree_.Child(ipco, FourCC("ienc"));
      if (parameters_ == kNoBox) parameters_ = tree_.Child(ipco, FourCC("iaux"));
    }
  }

  void LookAtPrimary(BoxId pitm) {
    const bool narrow = tree_.Payload(pitm, 0, 1).U8() == 0;
    FieldView fields = tree_.Payload(pitm, 4, 4);
    primary_ = narrow ? fields.U16() : fields.U32();
    primaryBox_ = pitm;
  }

  void LookAtProtection(Item* item) {
    if (item->protection == 0) return;
    if (item->protection > sinfs_.size()) {
      findings_->Doubt(item->box, "item " + std::to_string(item->id) + " has protection " +
                                      std::to_string(item->protection) + " of " +
                                      std::to_string(sinfs_.size()));
      return;
    }
    const ReportScheme& scheme = schemes_[item->protection - 1U];
    item->isProtected = true;
    item->scheme = scheme.type;
    Subject subject = SubjectOf(*item);
    findings_->Protect(item->box, subject, "An item with a protection index.");
    // Once for all items of one scheme: many items may share one that is large.
    if (reported_.empty()) reported_.resize(sinfs_.size());
    if (reported_[item->protection - 1U]) return;
    reported_[item->protection - 1U] = true;
    ReportSchemeInfo(findings_, sinfs_[item->protection - 1U], scheme, subject);
  }

  Subject SubjectOf(const Item& item) const {
    Subject subject;
    subject.item = item.id;
    if (item.type != 0) subject.format = TypeText(item.type);
    subject.scheme = item.scheme;
    return subject;
  }

  /// An item derived from a protected one (a "dimg" reference) is protected, by the same scheme,
  /// however long the way.
  void SpreadOverReferences() {
    if (derived_.empty()) return;
    // By input, so that each protected item finds what is derived from it.
    std::sort(derived_.begin(), derived_.end(),
              [](const auto& a, const auto& b) { return a.second < b.second; });
    std::vector<const Item*> waiting;
    for (const Item& item : items_) {
      if (item.isProtected) waiting.push_back(&item);
    }
    while (!waiting.empty()) {
      const Item& input = *waiting.back();
      waiting.pop_back();
      auto at = std::lower_bound(derived_.begin(), derived_.end(), input.id,
                                 [](const auto& a, std::uint32_t id) { return a.second < id; });
      for (; at != derived_.end() && at->second == input.id; ++at) {
        Item* item = Find(at->first);
        if (item == nullptr || item->isProtected) continue;
        item->isProtected = true;
        item->scheme = input.scheme;
        waiting.push_back(item);
        findings_->Protect(item->box, SubjectOf(*item),
                           "An item derived from protected item " + std::to_string(input.id) + ".");
      }
    }
  }

  /// What a derived item shows has to be known.
  void CheckInputs() {
    for (const auto& [from, input] : derived_) {
      if (Find(input) != nullptr) continue;
      findings_->Doubt(meta_, "an input of derived item " + std::to_string(from) +
                                  " is none of the items listed");
      return;
    }
  }

  Item* Find(std::uint32_t id) {
    const auto at = std::lower_bound(items_.begin(), items_.end(), id,
                                     [](const Item& a, std::uint32_t b) { return a.id < b; });
    return at != items_.end() && at->id == id ? &*at : nullptr;
  }

  void CheckPrimary() {
    if (primaryBox_ != kNoBox && Find(primary_) == nullptr)
      findings_->Doubt(primaryBox_, "the primary item is none of the items listed");
    if (hasLocations_ && !hasItems_)
      findings_->Doubt(meta_, "items have locations but no item information");
  }

  void CheckUnusedParameters() {
    const bool any = std::any_of(items_.begin(), items_.end(),
                                 [](const Item& item) { return item.isProtected; });
    if (parameters_ != kNoBox && !any)
      findings_->Doubt(parameters_, "parameters of encrypted items, yet no item is protected");
    if (!sinfs_.empty() && !any) findings_->Note("an item protection box that no item uses");
  }

  void Publish() {
    std::vector<ReportItem>& reported = findings_->Result().items;
    for (Item& item : items_) {
      if (reported.size() >= kMostItems) return;
      reported.push_back({item.id, item.type != 0 ? TypeText(item.type) : std::string(),
                          item.isProtected, std::move(item.scheme)});
    }
  }

  Findings* findings_;
  BoxTree& tree_;
  BoxId meta_;
  std::vector<Item> items_;
  std::vector<BoxId> sinfs_;
  std::vector<ReportScheme> schemes_;  ///< of the boxes in sinfs_
  std::vector<bool> reported_;         ///< which of them stand in the evidence
  ItemReferences derived_;
  BoxId parameters_ = kNoBox;
  BoxId primaryBox_ = kNoBox;
  std::uint32_t primary_ = 0;
  bool hasItems_ = false;
  bool hasLocations_ = false;
};

}  // namespace

std::uint64_t InspectItems(Findings* findings, BoxId box) {
  BoxTree& tree = findings->Tree();
  if (tree.At(box).type == FourCC("meta")) return ItemInspection(findings, box).Run();
  std::uint64_t items = 0;
  for (BoxId meta = tree.FirstChild(box); meta != kNoBox; meta = tree.Next(meta)) {
    if (tree.At(meta).type == FourCC("meta")) {
      items += ItemInspection(findings, meta).Run();
    } else {
      CheckUnknownBox(findings, meta);
    }
  }
  return items;
}

}  // namespace mp4
