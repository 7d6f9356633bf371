# Warnings and sanitizers for our own code only.
add_library(mp4judge_warnings INTERFACE)
target_compile_options(mp4judge_warnings INTERFACE
  -Wall -Wextra -Wshadow=local -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion -Wsign-conversion)
if(MP4JUDGE_WERROR)
  target_compile_options(mp4judge_warnings INTERFACE -Werror)
endif()
if(MP4JUDGE_SANITIZE)
  add_compile_options(-fsanitize=${MP4JUDGE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${MP4JUDGE_SANITIZE})
endif()
