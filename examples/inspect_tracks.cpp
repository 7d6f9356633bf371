// The tracks of a file and what protects them, in C++: inspect_tracks FILE.
#include <iostream>
#include <mp4judge/mp4judge.hpp>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const auto report = mp4judge::Report::OfPath(argv[1]);
  if (const auto error = report.error()) {
    std::cerr << argv[1] << ": " << error.text() << '\n';
  }
  std::cout << NameOf(report.verdict()) << '\n';
  for (const auto track : report.tracks()) {
    std::cout << "track " << track.id() << ' ' << track.handler() << ':';
    for (const auto entry : track.entries()) {
      std::cout << ' ' << entry.format();
      if (!entry.originalFormat().empty()) std::cout << " (was " << entry.originalFormat() << ')';
      for (const auto scheme : entry.schemes()) {
        std::cout << ' ' << (scheme.type.empty() ? "no scheme" : scheme.type);
      }
    }
    std::cout << '\n';
  }
  return static_cast<int>(report.verdict());
}
