; The installer: for one user, without administrator's rights. makensis gets, by -D, VERSION, SOURCE (the folder
; to install), FILES (the lists made of it by make-packages.sh) and OUTPUT.

; The program is a 64-bit one: so is its installer.
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true

!include MUI2.nsh
!include FileFunc.nsh

!define PROGRAM shelf-camera-tool.exe
!define TITLE "摄像头测试"
!define PICTURES_FOLDER "$PICTURES\摄像头图片"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\shelf-camera-tool"

Name "${TITLE} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\shelf-camera-tool"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" InstallLocation
BrandingText "${TITLE} ${VERSION}"

VIProductVersion ${VERSION}.0
VIFileVersion ${VERSION}.0
VIAddVersionKey /LANG=2052 ProductName "${TITLE}"
VIAddVersionKey /LANG=2052 ProductVersion "${VERSION}"
VIAddVersionKey /LANG=2052 FileVersion "${VERSION}"
VIAddVersionKey /LANG=2052 FileDescription "${TITLE} 安装程序"
VIAddVersionKey /LANG=2052 CompanyName "shelf-camera-tool maintainers"
VIAddVersionKey /LANG=2052 LegalCopyright "shelf-camera-tool maintainers"

!define MUI_ICON shelf-camera-tool.ico
!define MUI_UNICON shelf-camera-tool.ico
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION startProgram
!define MUI_FINISHPAGE_RUN_TEXT "立即启动${TITLE}"
!define MUI_FINISHPAGE_TEXT "图片将保存在“图片”里的“摄像头图片”文件夹。"

!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE SimpChinese

; A program that runs cannot be replaced: ask to close it, as often as needed. Silently: give up with code 2.
!macro waitUntilClosed
  waitUntilClosed:
  ClearErrors
  ${If} ${FileExists} "$INSTDIR\${PROGRAM}"
    FileOpen $0 "$INSTDIR\${PROGRAM}" a
    ${If} ${Errors}
      SetErrorLevel 2
      MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "请先关闭${TITLE}，再点击“重试”。" /SD IDCANCEL IDRETRY waitUntilClosed
      Abort
    ${EndIf}
    FileClose $0
  ${EndIf}
!macroend

Function startProgram
  SetOutPath "${PICTURES_FOLDER}"
  Exec '"$INSTDIR\${PROGRAM}"'
FunctionEnd

Section
  !insertmacro waitUntilClosed
  ; An older version first takes away what it installed; the new one may have other files.
  ReadRegStr $1 HKCU "${UNINSTALL_KEY}" UninstallString
  ReadRegStr $2 HKCU "${UNINSTALL_KEY}" InstallLocation
  ${If} $1 != ""
  ${AndIf} ${FileExists} "$2\uninstall.exe"
    ExecWait '"$2\uninstall.exe" /S _?=$2'
    Delete "$2\uninstall.exe"
  ${EndIf}

  !include "${FILES}/install.nsh"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  ; The working directory of a shortcut is the output folder of the moment.
  CreateDirectory "${PICTURES_FOLDER}"
  SetOutPath "${PICTURES_FOLDER}"
  CreateShortcut "$SMPROGRAMS\${TITLE}.lnk" "$INSTDIR\${PROGRAM}" "" "$INSTDIR\${PROGRAM}" 0
  SetOutPath "$INSTDIR"

  WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayName "${TITLE}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\${PROGRAM}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" Publisher "shelf-camera-tool maintainers"
  WriteRegStr HKCU "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" NoRepair 1
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  IntFmt $0 "0x%08X" $0
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" EstimatedSize "$0"
SectionEnd

; Takes away what was installed and nothing else: a folder that holds more stays, the pictures stay.
Section Uninstall
  !insertmacro waitUntilClosed
  SetOutPath "$TEMP"
  Delete "$SMPROGRAMS\${TITLE}.lnk"
  !include "${FILES}/uninstall.nsh"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd
