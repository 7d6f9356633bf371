# The library: one set of objects, a shared and a static form.
find_package(ZLIB REQUIRED)

file(GLOB MP4JUDGE_SOURCES CONFIGURE_DEPENDS
  io/*.cpp codecs/*.cpp platform/*.cpp boxes/*/*.cpp demux/*.cpp iso/*.cpp inspect/*.cpp samples/*.cpp)

add_library(mp4judge_objects OBJECT ${MP4JUDGE_SOURCES})
set_target_properties(mp4judge_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
target_include_directories(mp4judge_objects PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(mp4judge_objects PUBLIC ZLIB::ZLIB PRIVATE mp4judge_strict_warnings)

foreach(form SHARED STATIC)
  string(TOLOWER ${form} suffix)
  add_library(mp4judge_${suffix} ${form} $<TARGET_OBJECTS:mp4judge_objects>)
  set_target_properties(mp4judge_${suffix} PROPERTIES
    OUTPUT_NAME mp4judge EXPORT_NAME ${suffix} LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  target_include_directories(mp4judge_${suffix} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/mp4judge>)
  target_compile_features(mp4judge_${suffix} PUBLIC cxx_std_17)
  target_link_libraries(mp4judge_${suffix} PRIVATE ZLIB::ZLIB)
  add_library(mp4judge::${suffix} ALIAS mp4judge_${suffix})
endforeach()
