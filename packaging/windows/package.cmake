# What lies beside the programs in the ZIP and in the installer, and how cpack makes both.
set(here "${CMAKE_CURRENT_LIST_DIR}")

# Plug-ins of Qt that the program cannot find by itself: its window system, its look, JPEG pictures.
set(plugins platforms/qwindows.dll styles/qwindowsvistastyle.dll imageformats/qjpeg.dll)
set(camera_qt "${CAMERA_WINDOWS_DEPS}/qt")
foreach(plugin IN LISTS plugins)
  get_filename_component(folder "${plugin}" DIRECTORY)
  install(PROGRAMS "${camera_qt}/plugins/${plugin}" DESTINATION "${folder}")
endforeach()

find_program(CAMERA_OBJDUMP NAMES x86_64-w64-mingw32-objdump REQUIRED)
mark_as_advanced(CAMERA_OBJDUMP)
configure_file("${here}/installdlls.cmake.in" "${CMAKE_CURRENT_BINARY_DIR}/installdlls.cmake" @ONLY)
install(SCRIPT "${CMAKE_CURRENT_BINARY_DIR}/installdlls.cmake")

install(FILES /usr/share/qt6/translations/qtbase_zh_CN.qm DESTINATION translations)
install_user_guide(.)

# What the libraries' packages say of their licences, and the texts they refer to.
foreach(pair IN ITEMS
    Qt:qt6-base-dev Qt-translations:qt6-translations-l10n serial:libcxx-serial-dev CLI11:libcli11-dev GCC-runtime:gcc-mingw-w64-x86-64-posix-runtime
    MinGW-w64-runtime:mingw-w64-common NSIS:nsis)
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 name)
  list(GET pair 1 package)
  install(FILES "/usr/share/doc/${package}/copyright" DESTINATION licenses RENAME "${name}.txt")
endforeach()
foreach(name IN ITEMS LGPL-3 LGPL-2.1 GPL-3 GPL-2 Apache-2.0)
  install(FILES "/usr/share/common-licenses/${name}" DESTINATION licenses RENAME "${name}.txt")
endforeach()

# As Windows's editor likes it, with a mark of its encoding and its line ends.
file(READ "${here}/README.txt" readme)
string(ASCII 239 187 191 mark)
file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/README.txt" CONTENT "${mark}${readme}" @ONLY NEWLINE_STYLE CRLF)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/README.txt" DESTINATION .)

set(CPACK_GENERATOR ZIP NSIS)
set(CPACK_PACKAGE_NAME shelf-camera-tool)
set(CPACK_PACKAGE_VENDOR "shelf-camera-tool maintainers")
set(CPACK_PACKAGE_FILE_NAME "shelf-camera-tool-${PROJECT_VERSION}-windows-x64")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PROJECT_CONFIG_FILE "${here}/packnames.cmake")
set(CPACK_PRE_BUILD_SCRIPTS
  "${here}/signprograms.cmake" "${CMAKE_CURRENT_SOURCE_DIR}/settimes.cmake" "${here}/listfiles.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${here}/orderzip.cmake")
set(CPACK_NSIS_EXECUTABLE_PRE_ARGUMENTS "-INPUTCHARSET UTF8")
set(CPACK_CAMERA_ICON "${here}/shelf-camera-tool.ico")
set(CPACK_CAMERA_PATH_SCRIPT "${here}/path.nsh")
set(CPACK_CAMERA_SIGN "${here}/sign.sh")
# cpack looks there for NSIS.template.in.
list(PREPEND CMAKE_MODULE_PATH "${here}")
include(CPack)
