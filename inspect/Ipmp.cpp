#include "inspect/Ipmp.h"

#include <algorithm>
#include <string_view>

#include "inspect/DecoderConfig.h"
#include "inspect/Misplaced.h"
#include "inspect/SchemeInfo.h"
#include "io/FourCC.h"
#include "io/MemorySource.h"
#include "iso/Descriptor.h"

namespace mp4 {

namespace {

constexpr std::size_t kVersionAndFlags = 4;
/// Pointers kept; a stream needs one.
constexpr std::size_t kMostPointers = 1000;
/// Descriptors that can be pointed to; a file has one for each track.
constexpr std::size_t kMostDescriptors = 10000;

/// Where the "sinf" begins that descriptor data holds; npos without one.
std::size_t SchemeAt(std::string_view data) {
  const std::size_t type = data.find("sinf");
  return type == std::string_view::npos || type < 4 ? std::string_view::npos : type - 4;
}

/// A copy of a box's payload: what is read of it may read other boxes.
std::vector<unsigned char> PayloadOf(BoxTree* tree, BoxId box) {
  FieldView payload = tree->Payload(box);
  const std::size_t n = payload.Left();
  const unsigned char* bytes = payload.Bytes(n);
  return bytes != nullptr ? std::vector<unsigned char>(bytes, bytes + n)
                          : std::vector<unsigned char>();
}

/// Reads on where a writer was wrong about a length: then the descriptor ends with what holds it.
bool ReadLenient(FieldView* fields, Descriptor* descriptor) {
  FieldView before = *fields;
  if (ReadDescriptor(fields, descriptor)) return true;
  descriptor->tag = before.U8();
  while (before.Left() > 0 && (before.U8() & 0x80) != 0) {
  }
  const std::size_t n = before.Left();
  const unsigned char* rest = n > 0 ? before.Bytes(n) : nullptr;
  *fields = {};
  descriptor->payload = FieldView(rest, rest != nullptr ? n : 0);
  return rest != nullptr;
}

/// The parts of a descriptor that holds others.
class Holder {
 public:
  Holder(Findings* findings, const DescriptorBytes& where, MovieFacts* movie)
      : findings_(findings), where_(where), movie_(movie) {}

  void LookAtParts(FieldView fields) {
    Descriptor part;
    while (fields.Left() > 0 && ReadLenient(&fields, &part)) {
      switch (part.tag) {
        case kTagIpmpPointer:
          pointers_.push_back(ReadIpmpId(part.payload));
          break;
        case kTagIpmpDescriptor:
          InspectIpmpDescriptor(findings_, part.payload, where_, movie_);
          break;
        case kTagEsIdInc:
          streams_.push_back(part.payload.U32());
          break;
        case kTagIpmpTools:
          findings_->Doubt(where_.box, "a list of IPMP tools");
          break;
        default:
          break;
      }
    }
  }

  const std::vector<std::uint32_t>& Pointers() const { return pointers_; }
  const std::vector<std::uint32_t>& Streams() const { return streams_; }

  void Keep(std::uint32_t pointer, Subject subject) {
    if (movie_->ipmpUses.size() < kMostPointers) {
      movie_->ipmpUses.push_back({where_.box, std::move(subject), pointer});
    } else {
      findings_->Doubt(where_.box, "there are more IPMP pointers than the limit");
    }
  }

 private:
  Findings* findings_;
  const DescriptorBytes& where_;
  MovieFacts* movie_;
  std::vector<std::uint32_t> pointers_;
  std::vector<std::uint32_t> streams_;
};

/// Fields of an ES_Descriptor (ISO/IEC 14496-1, 7.2.6.5) in front of its parts.
void SkipStreamFields(FieldView* fields) {
  fields->Skip(2);
  const unsigned flags = fields->U8();
  if ((flags & 0x80) != 0) fields->Skip(2);             // the stream it depends on
  if ((flags & 0x40) != 0) fields->Skip(fields->U8());  // URL
  if ((flags & 0x20) != 0) fields->Skip(2);             // the stream of its clock
}

/// Fields of an InitialObjectDescriptor (7.2.6.4) in front of its parts.
void SkipInitialFields(FieldView* fields) {
  constexpr unsigned kUrl = 0x20;
  const unsigned flags = fields->U16();
  const std::size_t profiles = 5;
  fields->Skip((flags & kUrl) != 0 ? fields->U8() : profiles);
}

DescriptorBytes BytesOf(const Findings& findings, BoxTree* tree, BoxId box,
                        const std::vector<unsigned char>& payload) {
  std::optional<std::uint64_t> offset = findings.OffsetOf(box);
  if (offset.has_value()) *offset += tree->At(box).headerSize;
  return {box, tree->Path(box), payload.data(), offset};
}

void MarkTrack(Findings* findings, std::uint32_t id, MovieFacts* movie) {
  const auto facts = movie->tracks.find(id);
  if (facts == movie->tracks.end() || facts->second.isProtected) return;
  facts->second.isProtected = true;
  for (ReportTrack& track : findings->Result().tracks)
    track.isProtected = track.isProtected || track.id == id;
}

}  // namespace

std::uint32_t ReadIpmpId(FieldView payload) {
  constexpr std::uint32_t kExtended = 0xFF;
  const std::uint32_t id = payload.U8();
  return id == kExtended ? kExtended << 16 | payload.U16() : id;
}

void InspectIpmpDescriptor(Findings* findings, FieldView payload, const DescriptorBytes& where,
                           MovieFacts* movie) {
  const std::uint32_t id = ReadIpmpId(payload);
  if (movie->ipmpSchemes.size() >= kMostDescriptors) {
    findings->Doubt(where.box, "there are more IPMP descriptors than the limit");
    return;
  }
  movie->ipmpSchemes.emplace(id, std::string());
  const std::size_t n = payload.Left();
  const unsigned char* bytes = n > 0 ? payload.Bytes(n) : nullptr;
  const std::string_view data(reinterpret_cast<const char*>(bytes), bytes != nullptr ? n : 0);
  const std::size_t at = SchemeAt(data);
  if (at == std::string_view::npos) {
    findings->Doubt(where.box, "IPMP descriptor " + std::to_string(id) +
                                   " names no scheme, and what it protects cannot be told");
    return;
  }
  // Nothing more would be said.
  if (findings->IsFull()) return;
  MemorySource memory(bytes + at, n - at);
  CachedSource source(&memory);
  BoxTree boxes(&source);
  const BoxId sinf = boxes.FirstChild(kRootBox);
  if (sinf == kNoBox) return findings->Doubt(where.box, "an IPMP descriptor cannot be read");
  Subject subject;
  subject.scheme = ReadSchemeInfo(&boxes, sinf).type;
  movie->ipmpSchemes[id] = subject.scheme;
  const BoxId schm = boxes.Child(sinf, FourCC("schm"));
  const BoxId says = schm != kNoBox ? schm : sinf;
  std::optional<std::uint64_t> offset = where.offset;
  if (offset.has_value())
    *offset += static_cast<std::uint64_t>(bytes + at - where.first) + boxes.At(says).offset;
  findings->ProtectAt(where.path + "/" + boxes.Path(says), offset, subject,
                      "An IPMP descriptor with protection scheme information.");
}

std::uint8_t InspectElementaryStream(Findings* findings, BoxId esds, const Subject& subject,
                                     MovieFacts* movie) {
  BoxTree& tree = findings->Tree();
  const std::vector<unsigned char> payload = PayloadOf(&tree, esds);
  const DescriptorBytes where = BytesOf(*findings, &tree, esds, payload);
  FieldView fields(payload.data(), payload.size());
  fields.Skip(kVersionAndFlags);
  Descriptor stream;
  const DecoderConfig decoder = ReadDecoderConfig(fields);
  if (fields.Left() == 0 || !ReadLenient(&fields, &stream) || stream.tag != kTagEs) return 0;
  SkipStreamFields(&stream.payload);
  Holder holder(findings, where, movie);
  holder.LookAtParts(stream.payload);
  for (const std::uint32_t pointer : holder.Pointers()) holder.Keep(pointer, subject);
  return decoder.streamType;
}

void InspectInitialObjects(Findings* findings, BoxId iods, MovieFacts* movie) {
  BoxTree& tree = findings->Tree();
  const std::vector<unsigned char> payload = PayloadOf(&tree, iods);
  const DescriptorBytes where = BytesOf(*findings, &tree, iods, payload);
  FieldView fields(payload.data(), payload.size());
  fields.Skip(kVersionAndFlags);
  Descriptor object;
  if (fields.Left() == 0 || !ReadLenient(&fields, &object)) return;
  if (CoversBoxOnTheWay(&tree, iods, fields.At()))
    findings->Doubt(iods, "the initial objects cover boxes of the movie");
  if (object.tag != kTagInitialObjectDescriptor && object.tag != kTagFileInitialObjectDescriptor)
    return;
  SkipInitialFields(&object.payload);
  Holder holder(findings, where, movie);
  holder.LookAtParts(object.payload);
  const std::vector<std::uint32_t>& pointers = holder.Pointers();
  const std::vector<std::uint32_t>& streams = holder.Streams();
  // Each pointer protects each stream; that every one of both is met says the same.
  for (std::size_t i = 0; i < std::max(pointers.size(), streams.size()); ++i) {
    if (pointers.empty()) break;
    Subject subject;
    if (!streams.empty()) subject.track = streams[i < streams.size() ? i : 0];
    holder.Keep(pointers[i < pointers.size() ? i : 0], subject);
  }
}

void InspectIpmpControl(Findings* findings, BoxId ipmc, MovieFacts* movie) {
  BoxTree& tree = findings->Tree();
  const std::vector<unsigned char> payload = PayloadOf(&tree, ipmc);
  const DescriptorBytes where = BytesOf(*findings, &tree, ipmc, payload);
  findings->Doubt(ipmc, "a box of IPMP control, yet no sample entry says what it protects");
  FieldView fields(payload.data(), payload.size());
  fields.Skip(kVersionAndFlags);
  Descriptor tools;
  if (fields.Left() == 0 || !ReadDescriptor(&fields, &tools)) return;
  fields.Skip(1);  // how many descriptors follow
  Holder(findings, where, movie).LookAtParts(fields);
}

void ResolveIpmpPointers(Findings* findings, MovieFacts* movie) {
  for (const IpmpUse& use : movie->ipmpUses) {
    const std::string stream =
        use.subject.track.has_value() ? "track " + std::to_string(*use.subject.track) : "a stream";
    const auto scheme = movie->ipmpSchemes.find(use.pointer);
    if (scheme == movie->ipmpSchemes.end()) {
      findings->Doubt(use.box, "the descriptor of " + stream + " points to IPMP protection " +
                                   std::to_string(use.pointer) + ", which is not in the file");
      continue;
    }
    Subject subject = use.subject;
    subject.scheme = scheme->second;
    if (subject.track.has_value()) MarkTrack(findings, *subject.track, movie);
    findings->Protect(use.box, subject,
                      "The descriptor of " + stream + " points to IPMP protection " +
                          std::to_string(use.pointer) + ".");
  }
}

}  // namespace mp4
