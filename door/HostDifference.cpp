#include "door/HostDifference.h"

#include <memory>

#include "door/HostCounting.h"
#include "door/HostCulprit.h"
#include "door/HostFormat.h"
#include "door/HostReading.h"
#include "door/HostTrial.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// A file whose movie and fragments take more is not tried.
constexpr std::uint64_t kMostCopied = std::uint64_t{8} << 20;

/// A trial that begins with the host's answer; null when no copy has it.
std::unique_ptr<HostTrial> TrialOf(CachedSource* source, const Report& report,
                                   mp4judge_host_answer host) {
  const std::uint64_t end = report.stoppedAt.value_or(source->Size());
  for (const auto copy : {HostCopy::Of, HostCopy::OfEveryByte}) {
    auto trial = std::make_unique<HostTrial>(copy(source, end, kMostCopied));
    if (trial->Copy().whole && trial->Answer({}) == host && !trial->IsSpent()) return trial;
  }
  return nullptr;
}

/// Tracks whose handler box stands behind their sample entries, which the host then does not know
/// how to read.
bool HasLateHandler(BoxTree* tree) {
  const BoxId movie = tree->Child(kRootBox, FourCC("moov"));
  BoxId track = movie != kNoBox ? tree->Child(movie, FourCC("trak")) : kNoBox;
  for (; track != kNoBox; track = tree->NextOfType(track)) {
    const BoxId media = tree->Child(track, FourCC("mdia"));
    if (media == kNoBox) continue;
    const BoxId handler = tree->Child(media, FourCC("hdlr"));
    const BoxId information = tree->Child(media, FourCC("minf"));
    if (handler == kNoBox || information == kNoBox) continue;
    if (tree->At(handler).offset > tree->At(information).offset) return true;
  }
  return false;
}

bool IsProtected(mp4judge_host_answer answer) { return answer == MP4JUDGE_HOST_PROTECTED; }
bool IsNotProtected(mp4judge_host_answer answer) { return !IsProtected(answer); }

std::string OrNotExplained(const std::string& why) { return why.empty() ? "not explained" : why; }

std::string WhyUnreadable(CachedSource* source, const Report& report) {
  const std::string why = WhyHostDoesNotBegin(source);
  if (!why.empty()) return why;
  const auto trial = TrialOf(source, report, MP4JUDGE_HOST_UNREADABLE);
  return trial != nullptr ? WhyHostFails(trial.get()) : "";
}

/// Why the host does not see a "drms" where it should.
std::string WhyOverlooked(CachedSource* source, const Report& report) {
  const auto trial = TrialOf(source, report, MP4JUDGE_HOST_CLEAR);
  if (trial == nullptr) return {};
  const std::vector<BoxId> culprit = FindCulprit(trial.get(), IsProtected);
  if (!culprit.empty()) {
    return "what it read before is replaced by " + DescribeCulprit(trial.get(), culprit) +
           "; without that it says \"protected\"";
  }
  return HasLateHandler(&trial->Tree()) ? "a handler box stands behind the sample entries" : "";
}

std::string WhyClear(CachedSource* source, const Report& report) {
  const std::string why = WhyHostCountsNothing(report);
  return why.empty() ? WhyOverlooked(source, report) : why;
}

/// Where the bytes that make the host say "protected" cannot be changed by themselves.
std::string WhatHostReads(HostTrial* trial) {
  BoxTree& tree = trial->Tree();
  const BoxId movie = tree.Child(kRootBox, FourCC("moov"));
  const BoxId compressed = movie != kNoBox ? tree.Child(movie, FourCC("cmov")) : kNoBox;
  const bool changes = compressed != kNoBox &&
                       IsNotProtected(trial->Answer(trial->Without({compressed}))) &&
                       !trial->IsSpent();
  if (changes)
    return "it finds \"drms\" in what it inflates of " + DescribeCulprit(trial, {compressed});
  const std::vector<BoxId> culprit = FindCulprit(trial, IsNotProtected);
  return culprit.empty()
             ? ""
             : "it finds \"drms\" in what it reads of " + DescribeCulprit(trial, culprit);
}

std::string WhyProtected(CachedSource* source, const Report& report) {
  const auto trial = TrialOf(source, report, MP4JUDGE_HOST_PROTECTED);
  if (trial == nullptr) return {};
  std::string place = WhereHostFindsFormat(trial.get());
  return place.empty() ? WhatHostReads(trial.get()) : place;
}

}  // namespace

std::string WhyHostDiffers(CachedSource* source, const Report& report, mp4judge_host_answer host) {
  const bool isProtected = report.verdict == ProtectionVerdict::kProtected;
  if (host == MP4JUDGE_HOST_UNREADABLE) {
    return "the host reads no movie: " + OrNotExplained(WhyUnreadable(source, report));
  }
  if (isProtected == IsProtected(host)) return {};
  if (isProtected) {
    return "the host counts \"drms\" as the first format of a sound or video track, no more: " +
           OrNotExplained(WhyClear(source, report));
  }
  return "the host says \"protected\": " + OrNotExplained(WhyProtected(source, report));
}

}  // namespace mp4
