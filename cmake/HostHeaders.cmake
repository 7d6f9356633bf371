# The headers of hosts that drive the library class by class: what a host starts from, and all that
# those include. In the source they include each other from the project's root ("boxes/..."); users
# get them as "mp4judge/host/boxes/...", so that nothing of ours is found under such a common name.
file(GLOB MP4JUDGE_HOST_ROOTS RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS boxes/*/Box*.h)
list(APPEND MP4JUDGE_HOST_ROOTS
  demux/Mp4Demux.h demux/FileInfoInterface.h demux/Mp4FileMode.h
  boxes/description/MakeAACExtraData.h codecs/movaudiotags.h platform/ZR_Log.h
  io/Mp4StreamReader.h io/mmBufReader.h io/ConvertUTF.h)

# mp4judge_write_host_headers(FOLDER): (re)writes FOLDER/mp4judge/host; changed headers configure anew.
function(mp4judge_write_host_headers folder)
  file(GLOB_RECURSE old ${folder}/mp4judge/host/*.h)
  set(waiting ${MP4JUDGE_HOST_ROOTS})
  set(seen)
  while(waiting)
    list(POP_FRONT waiting header)
    if(header IN_LIST seen)
      continue()
    endif()
    list(APPEND seen ${header})
    file(READ ${header} text)
    string(REGEX MATCHALL "#include \"[^\"\n]+\"" lines "${text}")
    list(TRANSFORM lines REPLACE "#include \"([^\"]+)\"" "\\1")
    list(APPEND waiting ${lines})
    string(REPLACE "#include \"" "#include \"mp4judge/host/" text "${text}")
    file(CONFIGURE OUTPUT ${folder}/mp4judge/host/${header} CONTENT "${text}" @ONLY)
    list(REMOVE_ITEM old ${folder}/mp4judge/host/${header})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  endwhile()
  # What no host reaches any more must not be found either.
  if(old)
    file(REMOVE ${old})
  endif()
endfunction()
