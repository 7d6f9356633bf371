#include "inspect/ObjectDescriptors.h"

#include "inspect/Ipmp.h"
#include "inspect/SampleLocations.h"
#include "io/FourCC.h"
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
    CheckPlace();
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
    if (!LocateSamples(&tree_, table, kMostSamples, &samples))
      Doubt("the samples of the object descriptor track cannot be found");
    for (std::size_t i = 0; i < samples.size(); ++i) {
      bytes_ += samples[i].size;
      if (bytes_ > kMostBytes || !ReadSample(samples[i], i + 1)) {
        Doubt("sample " + std::to_string(i + 1) + " of the object descriptor track cannot be read");
        if (bytes_ > kMostBytes) break;
      }
    }
  }

  /// Samples in fragments and in other files are not read.
  void CheckPlace() {
    if (movie_->hasFragments) Doubt("fragments may hold samples of the object descriptor track");
    for (const BoxId table : track_.sampleTables) {
      if (IsElsewhere(tree_.At(table).parent))
        Doubt("the samples of the object descriptor track are in another file");
    }
  }

  /// DataEntryBox (ISO/IEC 14496-12, 8.7.2): without the flag its media is in another file.
  bool IsElsewhere(BoxId minf) {
    const BoxId dinf = tree_.Child(minf, FourCC("dinf"));
    const BoxId dref = dinf != kNoBox ? tree_.Child(dinf, FourCC("dref")) : kNoBox;
    if (dref == kNoBox) return false;
    for (BoxId box = tree_.FirstChild(dref); box != kNoBox; box = tree_.Next(box)) {
      constexpr unsigned kInThisFile = 1;
      if ((tree_.Payload(box, 3, 1).U8() & kInThisFile) == 0) return true;
    }
    return false;
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
    return ReadEach({copy.data(), copy.size()}, &ObjectInspection::ReadCommand);
  }

  /// False when one cannot be read; those behind it are read all the same, as far as they are told
  /// apart.
  bool ReadEach(FieldView fields, bool (ObjectInspection::*read)(const Descriptor&)) {
    bool whole = true;
    while (fields.Left() > 0) {
      Descriptor descriptor;
      if (!ReadDescriptor(&fields, &descriptor)) return false;
      whole = (this->*read)(descriptor) && whole;
    }
    return whole;
  }

  bool ReadCommand(const Descriptor& command) {
    constexpr std::uint8_t kLastCommand = 8;
    if (command.tag == kCommandEsUpdate) return ReadStreams(command.payload);
    if (command.tag != kCommandUpdate && command.tag != kCommandIpmpUpdate)
      return command.tag >= 1 && command.tag <= kLastCommand;
    return ReadEach(command.payload, &ObjectInspection::ReadPart);
  }

  /// ES_DescriptorUpdate: the id of an object, then streams by reference. Streams of their own
  /// could point to protection.
  static bool ReadStreams(FieldView fields) {
    fields.Skip(2);
    bool whole = fields.Ok();
    while (fields.Left() > 0 && whole) {
      Descriptor stream;
      whole = ReadDescriptor(&fields, &stream) && stream.tag == kTagEsIdRef;
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
      if (part.tag == kTagIpmpPointer) pointers.push_back(ReadIpmpId(part.payload));
      if (part.tag == kTagIpmpDescriptor) ReadIpmp(part.payload);
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

  void ReadIpmp(FieldView fields) {
    InspectIpmpDescriptor(findings_, fields, {track_.trak, path_, sample_->data(), sampleOffset_},
                          movie_);
  }

  void Protect(const Target& target) {
    Subject subject;
    const auto scheme = movie_->ipmpSchemes.find(target.pointer);
    if (scheme != movie_->ipmpSchemes.end()) subject.scheme = scheme->second;
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
  std::uint64_t bytes_ = 0;  ///< of all samples so far
  std::string path_;
  const std::vector<unsigned char>* sample_ = nullptr;
  std::uint64_t sampleOffset_ = 0;
};

}  // namespace

void InspectObjectDescriptors(Findings* findings, const ObjectTrack& track, MovieFacts* movie) {
  ObjectInspection(findings, track, movie).Run();
}

}  // namespace mp4
