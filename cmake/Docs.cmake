# The pages of the interfaces, made of their comments: target "docs", into the folder pages of the
# build. Any warning is an error, and what says nothing of itself is a warning.
#
#   cmake --preset docs && cmake --build --preset docs
find_program(MP4JUDGE_DOXYGEN doxygen)
find_program(MP4JUDGE_SPHINX sphinx-build)
set(MP4JUDGE_PAGES ${PROJECT_BINARY_DIR}/pages)
file(MAKE_DIRECTORY ${MP4JUDGE_PAGES})
configure_file(docs/Doxyfile.in Doxyfile @ONLY)

set(MP4JUDGE_C_PAGES ${MP4JUDGE_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile)
# The package is loaded for them, and so the shared library.
set(MP4JUDGE_PYTHON_PAGES ${CMAKE_COMMAND} -E env
  MP4JUDGE_LIBRARY=$<TARGET_FILE:mp4judge_library>
  PYTHONPATH=${PROJECT_SOURCE_DIR}/bindings/python PYTHONDONTWRITEBYTECODE=1
  ${MP4JUDGE_SPHINX} -q -E -W --keep-going -d ${PROJECT_BINARY_DIR}/sphinx
  ${PROJECT_SOURCE_DIR}/docs/python ${MP4JUDGE_PAGES}/python)

add_custom_target(docs)
if(MP4JUDGE_DOXYGEN)
  add_custom_target(docs_c COMMAND ${MP4JUDGE_C_PAGES} VERBATIM)
  add_dependencies(docs docs_c)
endif()
if(MP4JUDGE_SPHINX AND BUILD_SHARED_LIBS)
  add_custom_target(docs_python COMMAND ${MP4JUDGE_PYTHON_PAGES} DEPENDS mp4judge_library VERBATIM)
  add_dependencies(docs docs_python)
endif()
if(NOT MP4JUDGE_DOXYGEN OR NOT MP4JUDGE_SPHINX)
  add_custom_command(TARGET docs COMMAND ${CMAKE_COMMAND} -E echo
    "The target docs needs doxygen and sphinx-build (Debian: doxygen, python3-sphinx)."
    COMMAND ${CMAKE_COMMAND} -E false VERBATIM)
endif()
