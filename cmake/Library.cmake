# The library: its objects once, the library that hosts link, and a static form for our own tests.
include(CheckLinkerFlag)
find_package(ZLIB REQUIRED)

file(GLOB MP4JUDGE_SOURCES CONFIGURE_DEPENDS
  io/*.cpp codecs/*.cpp platform/*.cpp boxes/*/*.cpp demux/*.cpp iso/*.cpp inspect/*.cpp samples/*.cpp
  door/*.cpp)

# Most of what compiling takes goes into the same headers again and again. The copies of the library
# that the tests make compile a room at a time: mp4judge_in_rooms(TARGET). (Ordinary builds do not:
# there a source has to name the headers that it needs, and one change compiles one source.)
option(MP4JUDGE_IN_ROOMS "Compile a folder of sources at a time" OFF)
function(mp4judge_in_rooms target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  # A class of an unnamed namespace looks like one of a header then.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  foreach(source ${MP4JUDGE_SOURCES})
    file(RELATIVE_PATH room ${PROJECT_SOURCE_DIR} ${source})
    get_filename_component(room ${room} DIRECTORY)
    string(MAKE_C_IDENTIFIER ${room} room)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${room})
  endforeach()
endfunction()

add_library(mp4judge_objects OBJECT ${MP4JUDGE_SOURCES})
if(MP4JUDGE_IN_ROOMS)
  mp4judge_in_rooms(mp4judge_objects)
endif()
set_target_properties(mp4judge_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
target_include_directories(mp4judge_objects PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(mp4judge_objects PUBLIC ZLIB::ZLIB PRIVATE mp4judge_strict_warnings)

# mp4judge::mp4judge, shared or static as BUILD_SHARED_LIBS says. Who links it sees public headers
# and nothing else.
include(cmake/HostHeaders.cmake)
mp4judge_write_host_headers(${PROJECT_BINARY_DIR}/include)
add_library(mp4judge_library $<TARGET_OBJECTS:mp4judge_objects>)
add_library(mp4judge::mp4judge ALIAS mp4judge_library)
set_target_properties(mp4judge_library PROPERTIES
  OUTPUT_NAME mp4judge EXPORT_NAME mp4judge LINKER_LANGUAGE CXX
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
target_include_directories(mp4judge_library PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_features(mp4judge_library PUBLIC $<BUILD_INTERFACE:cxx_std_17>)
target_link_libraries(mp4judge_library PRIVATE ZLIB::ZLIB)
set(exports ${CMAKE_CURRENT_LIST_DIR}/mp4judge.map)
if(BUILD_SHARED_LIBS)
  check_linker_flag(CXX "LINKER:--version-script,${exports}" MP4JUDGE_HAS_VERSION_SCRIPTS)
  if(MP4JUDGE_HAS_VERSION_SCRIPTS)
    target_link_options(mp4judge_library PRIVATE "LINKER:--version-script,${exports}")
    set_property(TARGET mp4judge_library PROPERTY LINK_DEPENDS ${exports})
  endif()
endif()

# For tests of internals, fuzzers and benchmarks: every symbol, no matter what is exported.
add_library(mp4judge_internal STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:mp4judge_objects>)
set_target_properties(mp4judge_internal PROPERTIES LINKER_LANGUAGE CXX)
target_include_directories(mp4judge_internal PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(mp4judge_internal PUBLIC ZLIB::ZLIB)
