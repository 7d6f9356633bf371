// Copies the samples of one track into a raw file that players know: copy_track FILE TRACK OUT
// AAC gets an ADTS header for each sample, AVC and HEVC get start codes and, in front of each key
// frame, the parameter sets of the decoder configuration; everything else is copied as it is.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "mp4judge/samples.hpp"

namespace {

using Bytes = std::vector<unsigned char>;

/// Reads numbers of a decoder configuration; past its end they are 0.
class Config {
 public:
  explicit Config(const mp4judge_movie_track& track)
      : at_(track.config), end_(track.config + track.config_size) {}
  unsigned Byte() { return at_ < end_ ? *at_++ : 0U; }
  unsigned Pair() {
    const unsigned high = Byte();
    return high << 8 | Byte();
  }
  void Skip(unsigned n) {
    while (n-- > 0) Byte();
  }
  bool AtEnd() const { return at_ >= end_; }

 private:
  const unsigned char* at_;
  const unsigned char* end_;
};

void AppendStartCode(Bytes* out) { out->insert(out->end(), {0, 0, 0, 1}); }

void AppendParameterSets(Config* config, unsigned count, Bytes* out) {
  for (; count > 0 && !config->AtEnd(); --count) {
    AppendStartCode(out);
    for (unsigned n = config->Pair(); n > 0 && !config->AtEnd(); --n) {
      out->push_back(static_cast<unsigned char>(config->Byte()));
    }
  }
}

/// Units behind a length become units behind a start code.
struct Video {
  unsigned lengthSize = 0;
  Bytes parameterSets;

  Bytes Sample(const Bytes& bytes, bool sync) const {
    Bytes out;
    if (sync) out = parameterSets;
    for (std::size_t at = 0; bytes.size() - at > lengthSize;) {
      std::size_t n = 0;
      for (unsigned i = 0; i < lengthSize; ++i) n = n << 8 | bytes[at++];
      if (n > bytes.size() - at) break;
      AppendStartCode(&out);
      out.insert(out.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                 bytes.begin() + static_cast<std::ptrdiff_t>(at + n));
      at += n;
    }
    return out;
  }
};

/// AVCDecoderConfigurationRecord (ISO/IEC 14496-15, 5.3.3.1).
Video Avc(Config config) {
  Video video;
  config.Skip(4);
  video.lengthSize = (config.Byte() & 3) + 1;
  AppendParameterSets(&config, config.Byte() & 31, &video.parameterSets);
  AppendParameterSets(&config, config.Byte(), &video.parameterSets);
  return video;
}

/// HEVCDecoderConfigurationRecord (ISO/IEC 14496-15, 8.3.3.1).
Video Hevc(Config config) {
  Video video;
  config.Skip(21);
  video.lengthSize = (config.Byte() & 3) + 1;
  for (unsigned arrays = config.Byte(); arrays > 0 && !config.AtEnd(); --arrays) {
    config.Byte();
    AppendParameterSets(&config, config.Pair(), &video.parameterSets);
  }
  return video;
}

/// AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1), as far as ADTS repeats it.
struct Aac {
  unsigned objectType = 0, rateIndex = 0, channels = 0;

  Bytes Sample(const Bytes& bytes) const {
    const std::size_t n = bytes.size() + 7;
    const unsigned head[] = {0xFF,
                             0xF1,
                             (objectType - 1) << 6 | rateIndex << 2 | channels >> 2,
                             (channels & 3) << 6 | static_cast<unsigned>(n >> 11),
                             static_cast<unsigned>(n >> 3),
                             static_cast<unsigned>(n & 7) << 5 | 0x1F,
                             0xFC};
    Bytes out;
    for (const unsigned byte : head) out.push_back(static_cast<unsigned char>(byte));
    out.insert(out.end(), bytes.begin(), bytes.end());
    return out;
  }
};

/// Goes to the content of the next descriptor when it has this tag (ISO/IEC 14496-1, 8.3.3).
bool Enter(Config* config, unsigned tag) {
  if (config->Byte() != tag) return false;
  while ((config->Byte() & 0x80) != 0 && !config->AtEnd()) continue;
  return true;
}

/// False for what is not AAC, or of a kind that ADTS cannot say.
bool ReadAac(Config config, Aac* aac) {
  config.Skip(4);
  if (!Enter(&config, 3)) return false;
  config.Skip(2);
  const unsigned flags = config.Byte();
  if ((flags & 0x80) != 0) config.Skip(2);
  if ((flags & 0x40) != 0) config.Skip(config.Byte());
  if ((flags & 0x20) != 0) config.Skip(2);
  if (!Enter(&config, 4) || config.Byte() != 0x40) return false;
  config.Skip(12);
  if (!Enter(&config, 5)) return false;
  const unsigned bits = config.Pair();
  aac->objectType = bits >> 11;
  aac->rateIndex = bits >> 7 & 15;
  aac->channels = bits >> 3 & 15;
  // SBR and PS are told by an object type around the real one, which here is always AAC LC.
  if (aac->objectType == 5 || aac->objectType == 29) aac->objectType = 2;
  return aac->objectType >= 1 && aac->objectType <= 4 && aac->rateIndex < 13;
}

int Copy(const mp4judge::Movie& movie, std::size_t index, std::FILE* out) {
  const mp4judge_movie_track& track = *movie.Track(index);
  const std::string type = track.config_type != nullptr ? track.config_type : "";
  const Video video = type == "avcC"   ? Avc(Config(track))
                      : type == "hvcC" ? Hevc(Config(track))
                                       : Video();
  Aac aac;
  const bool isAac = type == "esds" && ReadAac(Config(track), &aac);
  Bytes bytes;
  for (const mp4judge_sample& sample : movie.Samples(index)) {
    if (sample.outside != 0 || sample.elsewhere != 0) {
      std::fprintf(stderr, "sample %llu is not in the file\n",
                   static_cast<unsigned long long>(sample.number));
      return 1;
    }
    bytes.resize(sample.size);
    if (movie.Read(sample, bytes.data(), bytes.size()) < bytes.size()) return 1;
    if (isAac) bytes = aac.Sample(bytes);
    if (video.lengthSize != 0) bytes = video.Sample(bytes, sample.sync == 1);
    if (std::fwrite(bytes.data(), 1, bytes.size(), out) < bytes.size()) return 1;
  }
  return movie.Error() == MP4JUDGE_OK ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: copy_track FILE TRACK OUT\n");
    return 2;
  }
  const mp4judge::Movie movie = mp4judge::Movie::OfPath(argv[1]);
  const auto id = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
  for (std::size_t i = 0; i < movie.TrackCount(); ++i) {
    if (movie.Track(i)->id != id) continue;
    if (movie.Track(i)->is_protected != 0) std::fprintf(stderr, "the track is protected\n");
    std::FILE* out = std::fopen(argv[3], "wb");
    if (out == nullptr) return 2;
    const int failed = Copy(movie, i, out);
    return std::fclose(out) != 0 || failed != 0 ? 2 : 0;
  }
  std::fprintf(stderr, "no track %u\n", id);
  return 2;
}
