# Windows x86-64 programs by the distribution's MinGW-w64, on Linux.
#
# Qt and the serial library for Windows come from one folder, CAMERA_WINDOWS_DEPS, with qt/ and serial/ in it:
# a cache variable, else an environment variable of that name, else the folder in the user's cache that
# packaging/windows/build-dependencies.sh fills.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The threads of the C++ library are POSIX ones: the other flavour has no std::thread.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Where a message names a source, it names it from the root of the project.
set(CMAKE_CXX_FLAGS_INIT "-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=")

# Programs and libraries without the date of their making.
foreach(kind IN ITEMS EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,--no-insert-timestamp")
endforeach()

if(NOT CAMERA_WINDOWS_DEPS)
  if(DEFINED ENV{CAMERA_WINDOWS_DEPS})
    set(CAMERA_WINDOWS_DEPS "$ENV{CAMERA_WINDOWS_DEPS}")
  elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(CAMERA_WINDOWS_DEPS "$ENV{XDG_CACHE_HOME}/shelf-camera-tool/windows")
  else()
    set(CAMERA_WINDOWS_DEPS "$ENV{HOME}/.cache/shelf-camera-tool/windows")
  endif()
endif()
set(CAMERA_WINDOWS_DEPS "${CAMERA_WINDOWS_DEPS}" CACHE PATH "Folder of Qt and the serial library for Windows")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CAMERA_WINDOWS_DEPS)

# While the dependencies themselves are built, their folders may be empty or missing.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "${CAMERA_WINDOWS_DEPS}/qt"
            "${CAMERA_WINDOWS_DEPS}/serial")
list(APPEND CMAKE_PREFIX_PATH "${CAMERA_WINDOWS_DEPS}/qt")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Qt's programs that run during a build (moc, uic, rcc) are the distribution's own, of the same version.
set(QT_HOST_PATH /usr CACHE PATH "Qt of the building machine")
if(NOT QT_HOST_PATH_CMAKE_DIR)
  execute_process(COMMAND dpkg-architecture --query DEB_HOST_MULTIARCH
    OUTPUT_VARIABLE camera_host_architecture OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT camera_host_architecture)
    set(camera_host_architecture x86_64-linux-gnu)
  endif()
  set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/${camera_host_architecture}/cmake" CACHE PATH
    "CMake files of the building machine's Qt")
endif()
