#include "inspect/ObjectDescriptors.h"

#include <string_view>

#include "inspect/SampleLocations.h"
#include "inspect/SchemeInfo.h"
#include "io/FourCC.h"
#include "io/MemorySource.h"
#include "iso/Descriptor.h"

namespace mp4 {

namespace {

/// A track of object descriptors has one sample, or one for each change of the scene.
constexpr std::size_t kMostSamples = 256;
constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 10;

class ObjectInspection {
 public:
  ObjectInspection(Findings* findings, const ObjectTrack& track, MovieFacts* movie)
      : findings_(findings), tree_(findings->Tree()), track_(track), movie_(movie) {}

  void Run() {
    ReadTargets();
    if (track_.sampleTables.empty()) Doubt("the object descriptor track has no sample table");
    for (const BoxId table : track_.sampleTables) ReadSamples(table);
    for (const Target& target : targets_) Protect(target);
  }

 private:
  struct Target {
    std::uint32_t track;
    std::uint32_t pointer;
  };

  void ReadSamples(BoxId table) {
    std::vector<SampleLocation> samples;
    // Without samples here they come in fragments, if anywhere.
    if (!LocateSamples(&tree_, table, kMostSamples, &samples) ||
        (samples.empty() && movie_->hasFragments))
      Doubt("the samples of the object descriptor track cannot be found");
    for (std::size_t i = 0; i < samples.size(); ++i) {
      bytes_ += samples[i].size;
      if (bytes_ > kMostBytes || !ReadSample(samples[i], i + 1)) {
        Doubt("sample " + std::to_string(i + 1) + " of the object descriptor track cannot be read");
        if (bytes_ > kMostBytes) break;
      }
    }
  }

  /// TrackReferenceTypeBox "mpod": the tracks that references of descriptors count in.
  void ReadTargets() {
    const BoxId references = tree_.Child(track_.trak, FourCC("tref"));
    if (references == kNoBox) return;
    const BoxId mpod = tree_.Child(references, FourCC("mpod"));
    if (mpod == kNoBox) return;
    FieldView fields = tree_.Payload(mpod);
    while (fields.Left() >= 4) mpod_.push_back(fields.U32());
  }

  bool ReadSample(const SampleLocation& sample, std::size_t number) {
    if (sample.size == 0 || sample.size > CachedSource::kLargestView) return false;
    const unsigned char* bytes = tree_.View(0, sample.offset, sample.size);
    if (bytes == nullptr) return false;
    // In-place bytes last until the next read.
    const std::vector<unsigned char> copy(bytes, bytes + sample.size);
    sample_ = &copy;
    sampleOffset_ = sample.offset;
    path_ = tree_.Path(track_.trak) + "/sample[" + std::to_string(number) + "]";
    FieldView fields(copy.data(), copy.size());
    bool whole = true;
    while (fields.Left() > 0) {
      Descriptor command;
      if (!ReadDescriptor(&fields, &command)) return false;
      whole = ReadCommand(command) && whole;
    }
    return whole;
  }

  bool ReadCommand(const Descriptor& command) {
    constexpr std::uint8_t kLastCommand = 8;
    if (command.tag != kCommandUpdate && command.tag != kCommandIpmpUpdate)
      return command.tag >= 1 && command.tag <= kLastCommand;
    FieldView fields = command.payload;
    bool whole = true;
    while (fields.Left() > 0) {
      Descriptor descriptor;
      if (!ReadDescriptor(&fields, &descriptor)) return false;
      whole = ReadPart(descriptor) && whole;
    }
    return whole;
  }

  /// False for a descriptor that has no business in a command: its length may be broken.
  bool ReadPart(const Descriptor& descriptor) {
    switch (descriptor.tag) {
      case kTagIpmpDescriptor:
        ReadIpmp(descriptor.payload);
        return true;
      case kTagObjectDescriptor:
      case kTagFileObjectDescriptor:
        return ReadObject(descriptor.payload);
      default:
        return false;
    }
  }

  /// ObjectDescriptor: an id, then references to streams and pointers to their protection.
  bool ReadObject(FieldView fields) {
    constexpr unsigned kUrl = 0x20;
    if ((fields.U16() & kUrl) != 0) fields.Skip(fields.U8());
    std::vector<std::uint32_t> streams;
    std::vector<std::uint32_t> pointers;
    bool whole = fields.Ok();
    while (fields.Left() > 0 && whole) {
      Descriptor part;
      whole = ReadDescriptor(&fields, &part);
      if (!whole) break;
      if (part.tag == kTagEsIdRef) streams.push_back(TrackOf(part.payload.U16()));
      if (part.tag == kTagEsIdInc) streams.push_back(part.payload.U32());
      if (part.tag == kTagIpmpPointer) pointers.push_back(ReadPointer(part.payload));
      if (part.tag == kTagEs) Doubt("an object descriptor holds a stream of its own");
    }
    // Each pointer protects each stream; that every one of both is met says the same.
    const std::uint32_t firstStream = streams.empty() ? 0 : streams.front();
    for (const std::uint32_t pointer : pointers) targets_.push_back({firstStream, pointer});
    for (std::size_t i = 1; i < streams.size() && !pointers.empty(); ++i)
      targets_.push_back({streams[i], pointers.front()});
    return whole;
  }

  std::uint32_t TrackOf(std::uint32_t reference) const {
    return reference >= 1 && reference <= mpod_.size() ? mpod_[reference - 1] : 0;
  }

  static std::uint32_t ReadPointer(FieldView fields) {
    constexpr std::uint32_t kExtended = 0xFF;
    const std::uint32_t id = fields.U8();
    return id == kExtended ? kExtended << 16 | fields.U16() : id;
  }

  /// IPMP_Descriptor: its id, a type, and data in which a "sinf" may stand.
  void ReadIpmp(FieldView fields) {
    FieldView start = fields;
    const std::uint32_t id = ReadPointer(start);
    const std::size_t n = fields.Left();
    const unsigned char* bytes = fields.Bytes(n);
    if (bytes == nullptr) return;
    const std::string_view data(reinterpret_cast<const char*>(bytes), n);
    const std::size_t type = data.find("sinf");
    if (type == std::string_view::npos || type < 4) return;
    ReadScheme(id, bytes + type - 4, n - (type - 4));
  }

  void ReadScheme(std::uint32_t id, const unsigned char* bytes, std::size_t n) {
    MemorySource memory(bytes, n);
    CachedSource source(&memory);
    BoxTree boxes(&source);
    const BoxId sinf = boxes.FirstChild(kRootBox);
    if (sinf == kNoBox) return;
    Subject subject;
    subject.scheme = ReadSchemeInfo(&boxes, sinf).type;
    const BoxId schm = boxes.Child(sinf, FourCC("schm"));
    const BoxId says = schm != kNoBox ? schm : sinf;
    const auto before = static_cast<std::uint64_t>(bytes - sample_->data());
    schemes_[id] = subject.scheme;
    findings_->ProtectAt(path_ + "/" + boxes.Path(says),
                         sampleOffset_ + before + boxes.At(says).offset, subject,
                         "An IPMP descriptor with protection scheme information.");
  }

  void Protect(const Target& target) {
    Subject subject;
    const auto scheme = schemes_.find(target.pointer);
    if (scheme != schemes_.end()) subject.scheme = scheme->second;
    const auto facts = movie_->tracks.find(target.track);
    if (facts == movie_->tracks.end()) {
      findings_->Protect(track_.trak, subject,
                         "An object descriptor points to IPMP protection of an unknown track.");
      return;
    }
    subject.track = target.track;
    if (!facts->second.isProtected) MarkTracks(target.track);
    facts->second.isProtected = true;
    findings_->Protect(track_.trak, subject,
                       "An object descriptor names the IPMP protection of track " +
                           std::to_string(target.track) + ".");
  }

  void MarkTracks(std::uint32_t id) {
    for (ReportTrack& track : findings_->Result().tracks)
      track.isProtected = track.isProtected || track.id == id;
  }

  void Doubt(std::string text) { findings_->Doubt(track_.trak, std::move(text)); }

  Findings* findings_;
  BoxTree& tree_;
  ObjectTrack track_;
  MovieFacts* movie_;
  std::vector<std::uint32_t> mpod_;
  std::vector<Target> targets_;
  std::map<std::uint32_t, std::string> schemes_;  ///< by number of the IPMP descriptor
  std::uint64_t bytes_ = 0;                       ///< of all samples so far
  std::string path_;
  const std::vector<unsigned char>* sample_ = nullptr;
  std::uint64_t sampleOffset_ = 0;
};

}  // namespace

void InspectObjectDescriptors(Findings* findings, const ObjectTrack& track, MovieFacts* movie) {
  ObjectInspection(findings, track, movie).Run();
}

}  // namespace mp4
