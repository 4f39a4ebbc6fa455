# The target `ffmpeg`: from FFMPEG_ROOT (a folder with bin, lib and include) or, without it, the system's.
set(FFMPEG_ROOT "" CACHE PATH "A folder with FFmpeg's shared libraries; empty: found with pkg-config")
set(FFMPEG_OF_TESTS "" CACHE PATH "A folder with the static libraries of FFmpeg that a stand-in writes files with")

add_library(ffmpeg INTERFACE)
if(FFMPEG_ROOT)
  target_include_directories(ffmpeg SYSTEM INTERFACE ${FFMPEG_ROOT}/include)
  foreach(library avcodec avformat avutil swscale swresample)
    # Those of the package have names of their own. Not cached: another FFMPEG_ROOT has other libraries.
    find_library(FFMPEG_${library} NAMES ${library}-brisolte ${library} NO_CACHE PATHS ${FFMPEG_ROOT}/lib NO_DEFAULT_PATH
      NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    target_link_libraries(ffmpeg INTERFACE ${FFMPEG_${library}})
  endforeach()
  file(GLOB FFMPEG_DLLS "${FFMPEG_ROOT}/bin/*.dll")
else()
  find_package(PkgConfig REQUIRED)
  # The oldest that works: the series 6.0.
  pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET
    libavcodec>=60.3 libavformat>=60.3 libavutil>=58.2 libswscale>=7.1 libswresample>=4.10)
  target_link_libraries(ffmpeg INTERFACE PkgConfig::FFMPEG)
endif()
