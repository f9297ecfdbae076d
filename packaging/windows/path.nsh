; The user's PATH. It is worked on in memory of the system, as it may be longer than a text of NSIS.

!define HKEY_CURRENT_USER_HANDLE -2147483647
!define KEY_READ_WRITE 0x2001F
!define REG_EXPAND_SZ 2

; setPath: 1 on the stack puts the program's folder at the end of PATH, 0 takes it out. What cannot be read stays as it is.
; $1 key, $2 type, $3 bytes, $4 buffer: the value between two semicolons, $5 place, $6 folder and
; semicolon, $7 what to do.
!macro pathFunction UN
  Function ${UN}setPath
    Pop $7
    System::Call 'advapi32::RegOpenKeyExW(p ${HKEY_CURRENT_USER_HANDLE}, w "Environment", i 0, i ${KEY_READ_WRITE}, *p .r1) i .r0'
    ${If} $0 != 0
      Return
    ${EndIf}
    StrCpy $3 0
    System::Call 'advapi32::RegQueryValueExW(p r1, w "Path", p 0, *i .r2, p 0, *i .r3) i .r0'
    ${If} $0 != 0
      StrCpy $2 ${REG_EXPAND_SZ}
      StrCpy $3 0
    ${EndIf}
    StrCpy $6 "$INSTDIR;"
    StrLen $0 $6
    IntOp $0 $0 * 2
    IntOp $0 $0 + $3
    IntOp $0 $0 + 16
    System::Alloc $0
    Pop $4
    System::Call 'kernel32::lstrcpyW(p r4, w ";")'
    StrCpy $0 0
    ${If} $3 > 2
      IntPtrOp $5 $4 + 2
      System::Call 'advapi32::RegQueryValueExW(p r1, w "Path", p 0, p 0, p r5, *i r3) i .r0'
      System::Call 'kernel32::lstrcatW(p r4, w ";")'
    ${EndIf}
    ${If} $0 == 0
      Call ${UN}changePath
    ${EndIf}
    System::Free $4
    System::Call 'advapi32::RegCloseKey(p r1)'
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=2000
  FunctionEnd

  ; Changes the buffer and writes it.
  Function ${UN}changePath
    ${Do}
      StrCpy $0 ";$6"
      System::Call 'shlwapi::StrStrIW(p r4, w r0) p .r5'
      ${If} $5 P= 0
        ${Break}
      ${EndIf}
      StrLen $0 $6
      IntOp $0 $0 * 2
      IntPtrOp $0 $5 + $0
      System::Call 'kernel32::lstrlenW(p r0) i .r3'
      IntOp $3 $3 + 1
      IntOp $3 $3 * 2
      System::Call 'kernel32::RtlMoveMemory(p r5, p r0, p r3)'
    ${Loop}
    ${If} $7 == 1
      System::Call 'kernel32::lstrcatW(p r4, w r6)'
    ${EndIf}
    System::Call 'kernel32::lstrlenW(p r4) i .r3'
    ${If} $3 < 2
      System::Call 'advapi32::RegDeleteValueW(p r1, w "Path")'
      Return
    ${EndIf}
    IntOp $3 $3 - 1
    IntOp $3 $3 * 2
    IntPtrOp $0 $4 + $3
    System::Call '*$0(&i2 0)'
    IntPtrOp $0 $4 + 2
    System::Call 'advapi32::RegSetValueExW(p r1, w "Path", i 0, i r2, p r0, i r3)'
  FunctionEnd
!macroend

!insertmacro pathFunction ""
!insertmacro pathFunction "un."
