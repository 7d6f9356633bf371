# The library once more under the address and undefined-behaviour sanitizers, in the same build as
# the ordinary one, and twins of programs on it. A twin is linked from the objects of the program it
# doubles: those are compiled once, without a sanitizer, since the library is what is under test.
set(folders "")
foreach(source ${MP4JUDGE_SOURCES})
  get_filename_component(folder ${source} DIRECTORY)
  list(APPEND folders ${folder}/*.h)
endforeach()
list(REMOVE_DUPLICATES folders)
file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} ${folders})
list(TRANSFORM headers REPLACE "(.+)" "#include \"\\1\"\n")
list(JOIN headers "" includes)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/every_header.cpp CONTENT "${includes}" @ONLY)
# Inline functions that no source of the library calls: without a copy of its own here, a twin would
# take the one that the tests were compiled with, which is not instrumented.
set_source_files_properties(${PROJECT_BINARY_DIR}/every_header.cpp PROPERTIES
  COMPILE_OPTIONS -fkeep-inline-functions)

set(MP4JUDGE_SANITIZERS -fsanitize=address,undefined -fno-sanitize-recover=all)
add_library(mp4judge_sanitized_objects OBJECT ${MP4JUDGE_SOURCES} ${PROJECT_BINARY_DIR}/every_header.cpp)
target_include_directories(mp4judge_sanitized_objects PRIVATE
  $<TARGET_PROPERTY:mp4judge_objects,INCLUDE_DIRECTORIES>)
target_compile_definitions(mp4judge_sanitized_objects PRIVATE
  $<TARGET_PROPERTY:mp4judge_objects,COMPILE_DEFINITIONS>)
target_compile_options(mp4judge_sanitized_objects PRIVATE
  -O1 -g1 -UNDEBUG -fno-omit-frame-pointer ${MP4JUDGE_SANITIZERS})
target_link_libraries(mp4judge_sanitized_objects PRIVATE ZLIB::ZLIB)
mp4judge_in_rooms(mp4judge_sanitized_objects)

# mp4judge_twin(PROGRAM FOLDER [SOURCE...]): PROGRAM_sanitized, in build/.../sanitized/FOLDER under
# the program's name. The library's objects come first, so that of two copies of an inline function
# the linker takes the instrumented one. These sources of the program are compiled once more, because
# they have to know that they are sanitized.
function(mp4judge_twin program folder)
  get_target_property(libraries ${program} LINK_LIBRARIES)
  list(FILTER libraries EXCLUDE REGEX "^mp4judge")
  set(objects $<TARGET_OBJECTS:${program}>)
  foreach(source ${ARGN})
    set(objects $<FILTER:${objects},EXCLUDE,/${source}>)
  endforeach()
  add_executable(${program}_sanitized
    $<TARGET_OBJECTS:mp4judge_sanitized_objects> ${objects} ${ARGN})
  target_include_directories(${program}_sanitized PRIVATE
    $<TARGET_PROPERTY:${program},INCLUDE_DIRECTORIES>)
  target_compile_definitions(${program}_sanitized PRIVATE
    $<TARGET_PROPERTY:${program},COMPILE_DEFINITIONS>)
  target_compile_options(${program}_sanitized PRIVATE -O1 ${MP4JUDGE_SANITIZERS})
  set_target_properties(${program}_sanitized PROPERTIES
    LINKER_LANGUAGE CXX OUTPUT_NAME ${program}
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/sanitized/${folder})
  target_link_libraries(${program}_sanitized PRIVATE ZLIB::ZLIB ${libraries})
  target_link_options(${program}_sanitized PRIVATE ${MP4JUDGE_SANITIZERS})
endfunction()
