#!/usr/bin/env bash
# What the shared library shows and needs: check_symbols.sh LIBRARY
set -euo pipefail
library=$1
failed=0
fail() {
  echo "FAILED: $*"
  failed=1
}

dynamic=$(readelf -dW "$library")
symbols=$(nm -DC --defined-only "$library")

grep -q 'SONAME.*\[libmp4judge\.so\.1\]' <<<"$dynamic" || fail "the SONAME is not libmp4judge.so.1"

# Only zlib and the language runtimes.
while read -r needed; do
  case $needed in
    libz.so.*|libstdc++.so.*|libc.so.*|libm.so.*|libgcc_s.so.*|ld-linux*) ;;
    *) fail "unexpected dependency $needed" ;;
  esac
done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")

# has LETTER NAME: a defined dynamic symbol of that kind.
has() { grep -qE "^[0-9a-f]+ $1 $2(\(|$)" <<<"$symbols" || fail "missing: $1 $2"; }
has T JudgeMP4HaveDRM
has W ZRLogEx
has T Mp4Demux::Init
has T Mp4Demux::ReadyToDemux
has '[BDR]' Mp4Demux::m_arSupportedMode
has T GetFileModeInfo
has T InitFileModeInfoArray
has T Mp4StreamReader::SetFilePath
has T Mp4Context::AddTrack
has T codec_get_id
has T codec_get_tag
has T av_get_bits_per_sample
has T MakeAACExtraData
has T ConvertUTF8toUTF32
for table in codec_movaudio_tags codec_movvideo_tags codec_wav_tags ff_mp4_obj_type; do
  has '[BDR]' "$table"
done
for box in MOOV TRAK TKHD MDIA MDHD HDLR MINF STBL STSD STTS STSC STSZ STCO STSS FTYP MVHD CMOV \
  MVEX MEHD TREX MOOF MFHD TRAF TFHD TRUN UDTA AVCC ESDS WAVE; do
  has '[TW]' "Box$box::ReadData"
done
for box in Ilst Meta; do has '[TW]' "Box$box::ReadData"; done

# The C entries have plain names; the codec functions must not.
plain=$(nm -D --defined-only "$library" | awk '{print $3}')
grep -qx JudgeMP4HaveDRM <<<"$plain" || fail "JudgeMP4HaveDRM is not a C function"
! grep -qx av_get_bits_per_sample <<<"$plain" || fail "av_get_bits_per_sample has C linkage"
# What was not marked for export stays inside.
! grep -q '(anonymous namespace)' <<<"$symbols" || fail "an internal symbol is exported"

exit $failed
