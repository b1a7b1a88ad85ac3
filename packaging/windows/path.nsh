; The list of folders that commands are looked for in, of the user or of the system.

; Puts $INSTDIR into it ($R0 is "add") or takes it out. With the system's own calls on memory of our own: the installer's
; strings end after 1023 characters, and what is cut off such a list is lost to every program.
!macro CHANGE_PATH UN
  Function ${UN}ChangePath
    StrCpy $1 -2147483647  ; HKEY_CURRENT_USER
    StrCpy $2 "Environment"
    ${If} $MultiUser.InstallMode == "AllUsers"
      StrCpy $1 -2147483646  ; HKEY_LOCAL_MACHINE
      StrCpy $2 "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
    ${EndIf}
    System::Call 'advapi32::RegOpenKeyExW(p r1, w r2, i 0, i 3, *p .r3) i .r0'  ; to read and to write
    ${If} $0 <> 0
      Return
    ${EndIf}
    StrCpy $4 0
    StrCpy $5 0
    System::Call 'advapi32::RegQueryValueExW(p r3, w "Path", p 0, *i r4 r4, p 0, *i r5 r5) i .r0'
    StrLen $6 $INSTDIR
    IntOp $6 $6 * 2
    IntOp $6 $6 + $5
    IntOp $6 $6 + 16
    System::Alloc $6  ; filled with NULs
    Pop $7
    IntPtrOp $8 $7 + 2
    ${If} $0 = 0
      System::Call 'advapi32::RegQueryValueExW(p r3, w "Path", p 0, p 0, p r8, *i r5 r5) i .r0'
    ${ElseIf} $0 = 2  ; there is none yet
      StrCpy $0 0
      StrCpy $4 2  ; REG_EXPAND_SZ
    ${EndIf}
    ${If} $0 = 0
    ${AndIf} $4 >= 1
    ${AndIf} $4 <= 2
      Call ${UN}ChangePathText
    ${EndIf}
    System::Free $7
    System::Call 'advapi32::RegCloseKey(p r3)'
  FunctionEnd

  ; $3: the key; $4: the type of the value; $8: the text, with room in front and behind.
  Function ${UN}ChangePathText
    System::Call 'kernel32::lstrlenW(p r8) i .r5'
    System::Call '*$7(&i2 59)'  ; ";"
    ${If} $5 > 0
      System::Call 'kernel32::lstrcatW(p r7, w ";")'
    ${EndIf}
    System::Call 'shlwapi::StrStrIW(p r7, w ";$INSTDIR;") p .r9'
    ${If} $R0 == "add"
    ${AndIf} $9 P= 0
      System::Call 'kernel32::lstrcatW(p r7, w "$INSTDIR;")'
    ${ElseIf} $R0 != "add"
    ${AndIf} $9 P<> 0
      StrLen $6 ";$INSTDIR"
      IntOp $6 $6 * 2
      IntPtrOp $6 $9 + $6
      System::Call 'kernel32::lstrlenW(p r6) i .r5'
      IntOp $5 $5 * 2
      IntOp $5 $5 + 2
      System::Call 'kernel32::RtlMoveMemory(p r9, p r6, p r5)'
    ${Else}
      Return
    ${EndIf}
    System::Call 'kernel32::lstrlenW(p r8) i .r5'
    ${If} $5 < 2
      System::Call 'advapi32::RegDeleteValueW(p r3, w "Path")'
    ${Else}
      IntOp $5 $5 * 2  ; the last ";" becomes the NUL
      IntPtrOp $6 $8 + $5
      IntPtrOp $6 $6 - 2
      System::Call '*$6(&i2 0)'
      System::Call 'advapi32::RegSetValueExW(p r3, w "Path", i 0, i r4, p r8, i r5)'
    ${EndIf}
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=5000
  FunctionEnd
!macroend
