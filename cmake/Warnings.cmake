# Warnings and sanitizers for our own code only.
add_library(mp4judge_warnings INTERFACE)
add_library(mp4judge_strict_warnings INTERFACE)
target_compile_options(mp4judge_warnings INTERFACE
  -Wall -Wextra -Wno-missing-field-initializers -Wnon-virtual-dtor -Woverloaded-virtual
  $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow>  # false alarms inside std::vector of bytes
  $<$<BOOL:${MP4JUDGE_WERROR}>:-Werror>)
# The library itself does not narrow by accident either; tests may.
target_compile_options(mp4judge_strict_warnings INTERFACE -Wconversion -Wsign-conversion)
target_link_libraries(mp4judge_strict_warnings INTERFACE mp4judge_warnings)
if(MP4JUDGE_SANITIZE)
  add_compile_options(-fsanitize=${MP4JUDGE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${MP4JUDGE_SANITIZE})
endif()
if(MP4JUDGE_FUZZ)
  # What lets libFuzzer see the branches an input takes.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
