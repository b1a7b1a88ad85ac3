; The installer for Windows, for one user or for all. makensis is told, by -D: VERSION (three numbers), COPYRIGHT, WEBSITE,
; PROGRAMS, the folder that holds what is installed, ICON, SIDE, a picture of 164 x 314, and OUTPUT, the installer to write.
;
; What it deletes it deletes by name, and a folder only when it is empty: whoever installs into a folder with files of
; his own keeps them.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
SetDateSave off  ; the files get the time of their installation, and the installer is the same whenever it is built
AllowSkipFiles off
ManifestDPIAware true
ManifestSupportedOS Win10

!define PRODUCT "Quorvel"
!define PUBLISHER "The Quorvel developers"
!define INSTALLED "Software\Microsoft\Windows\CurrentVersion\Uninstall\${PRODUCT}"
!define APP_PATHS "Software\Microsoft\Windows\CurrentVersion\App Paths"
!define HELP "quorvel help.chm"

!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_INSTALLMODE_DEFAULT_CURRENTUSER
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR "${PRODUCT}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${INSTALLED}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${INSTALLED}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_USE_PROGRAMFILES64
!define MULTIUSER_MUI
!include MultiUser.nsh
!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include WinVer.nsh
!include WordFunc.nsh

Name "${PRODUCT} ${VERSION}"
OutFile "${OUTPUT}"
BrandingText "${PRODUCT} ${VERSION}"
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "${PRODUCT} Setup"
VIAddVersionKey "CompanyName" "${PUBLISHER}"
VIAddVersionKey "LegalCopyright" "Copyright © ${COPYRIGHT}"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${SIDE}"
!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_SMALLDESC
!define MUI_WELCOMEPAGE_TEXT "This installs ${PRODUCT}, which gives television episode files their right names and \
  places.$\r$\n$\r$\nYour settings, rules and exceptions are kept when you install a newer version over an older one."
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION RunAsTheUser
!define MUI_UNCONFIRMPAGE_TEXT_TOP "This removes ${PRODUCT} together with your settings, your rules and your \
  exceptions. Your episodes stay as they are."

!insertmacro MUI_PAGE_WELCOME
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!define MUI_PAGE_CUSTOMFUNCTION_PRE ChooseVerbs
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; --- A copy that is running ---------------------------------------------------------------------------------------------

; Nobody can write the file of a program that runs.
!macro LOOK_AT PROGRAM
  ${If} ${FileExists} "$INSTDIR\${PROGRAM}"
    ClearErrors
    FileOpen $1 "$INSTDIR\${PROGRAM}" a
    ${If} ${Errors}
      StrCpy $0 "running"
    ${Else}
      FileClose $1
    ${EndIf}
  ${EndIf}
!macroend

; $0 is then "running", else empty.
!macro LOOK_FOR_RUNNING
  StrCpy $0 ""
  !insertmacro LOOK_AT quorvel.exe
  !insertmacro LOOK_AT quorvel-cli.exe
!macroend

; The message that asks the window to close, as the updater sends it: record number 3, the text and its NUL.
!macro ASK_TO_CLOSE CAPTION
  FindWindow $1 "" "${CAPTION}"
  ${If} $1 P<> 0
    System::Call '*(&m8 "QV|UD|") p .r2'
    System::Call '*(p 3, i 7, i 0, p r2) p .r3'
    System::Call 'user32::SendMessageTimeoutW(p r1, i 74, p 0, p r3, i 2, i 5000, *p .r4)'
    System::Free $3
    System::Free $2
  ${EndIf}
!macroend

!macro CLOSE_RUNNING UN
  ; Closes a copy that runs from $INSTDIR; ends the setup, with nothing changed, where that is not wanted or fails.
  Function ${UN}CloseRunning
    look:
      !insertmacro LOOK_FOR_RUNNING
      StrCmp $0 "" done
    MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION \
      "${PRODUCT} is running, or its files in $INSTDIR cannot be written.$\r$\n$\r$\nOK closes it and goes on. Files \
      still waiting in its queue stay as they are." /SD IDOK IDOK close
    SetErrorLevel 2
    Quit
    close:
      ReadRegStr $5 SHCTX "${INSTALLED}" "DisplayVersion"
      ${If} $5 == ""
        StrCpy $5 "${VERSION}"
      ${EndIf}
      ${WordFind} $5 "." "+2{*" $5  ; the caption has the first two numbers
      !insertmacro ASK_TO_CLOSE "${PRODUCT} $5"
      StrCpy $5 0
      ${Do}
        Sleep 200
        !insertmacro LOOK_FOR_RUNNING
        StrCmp $0 "" done
        IntOp $5 $5 + 1
      ${LoopUntil} $5 = 100
      IfSilent 0 look
      SetErrorLevel 2
      Quit
    done:
  FunctionEnd
!macroend
!insertmacro CLOSE_RUNNING ""
!insertmacro CLOSE_RUNNING "un."

; --- Installing ---------------------------------------------------------------------------------------------------------

Function .onInit
  StrCpy $9 $INSTDIR  ; empty, or what /D= has named
  !insertmacro MULTIUSER_INIT
  ${If} $9 != ""
    StrCpy $INSTDIR $9
  ${EndIf}
  ${IfNot} ${AtLeastWin10}
    MessageBox MB_OK|MB_ICONSTOP "${PRODUCT} needs Windows 10 or later." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  Call ChooseVerbs
  Call ChooseBySwitches
FunctionEnd

; --- The list of folders that commands are looked for in ----------------------------------------------------------------

!include "path.nsh"
!insertmacro CHANGE_PATH ""
!insertmacro CHANGE_PATH "un."

; --- What is installed --------------------------------------------------------------------------------------------------

Section "${PRODUCT}" SectionPrograms
  SectionIn RO
  Call CloseRunning
  SetOutPath "$INSTDIR"
  File "${PROGRAMS}/quorvel.exe"
  File "${PROGRAMS}/quorvel-cli.exe"
  File "${PROGRAMS}/${HELP}"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}.lnk" "$INSTDIR\quorvel.exe"

  WriteRegStr SHCTX "${APP_PATHS}\quorvel.exe" "" "$INSTDIR\quorvel.exe"
  WriteRegStr SHCTX "${APP_PATHS}\quorvel-cli.exe" "" "$INSTDIR\quorvel-cli.exe"

  ${GetSize} "$INSTDIR" "/M=quorvel*.* /S=0K /G=0" $0 $1 $2
  WriteRegStr SHCTX "${INSTALLED}" "DisplayName" "${PRODUCT}"
  WriteRegStr SHCTX "${INSTALLED}" "DisplayVersion" "${VERSION}"
  WriteRegStr SHCTX "${INSTALLED}" "DisplayIcon" "$INSTDIR\quorvel.exe"
  WriteRegStr SHCTX "${INSTALLED}" "Publisher" "${PUBLISHER}"
  WriteRegStr SHCTX "${INSTALLED}" "URLInfoAbout" "${WEBSITE}"
  WriteRegStr SHCTX "${INSTALLED}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${INSTALLED}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr SHCTX "${INSTALLED}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD SHCTX "${INSTALLED}" "EstimatedSize" "$0"
  WriteRegDWORD SHCTX "${INSTALLED}" "NoModify" 1
  WriteRegDWORD SHCTX "${INSTALLED}" "NoRepair" 1
SectionEnd

; The program writes these entries itself at its first start, for the user who starts it; here they are written for all
; whom the installation is for.
!macro WRITE_VERB TYPE
  WriteRegStr SHCTX "Software\Classes\${TYPE}\shell\${PRODUCT}\command" "" '"$INSTDIR\quorvel.exe" %1'
!macroend

Section "Entries in Explorer's menu for videos and folders" SectionVerbs
  !insertmacro WRITE_VERB "SystemFileAssociations\.avi"
  !insertmacro WRITE_VERB "SystemFileAssociations\.mkv"
  !insertmacro WRITE_VERB "SystemFileAssociations\.mpg"
  !insertmacro WRITE_VERB "SystemFileAssociations\.mp4"
  !insertmacro WRITE_VERB "SystemFileAssociations\video"
  !insertmacro WRITE_VERB "Directory"
SectionEnd

; Whoever has left them out does not want the program to write them at its first start. What the preferences have said
; before holds.
Section "-"
  ${IfNot} ${SectionIsSelected} ${SectionVerbs}
    ReadRegDWORD $0 HKCU "Software\${PRODUCT}" "context"
    ReadRegStr $1 HKCU "Software\${PRODUCT}" ""
    ${If} $0 == ""
    ${OrIf} $0 = 0
      WriteRegDWORD HKCU "Software\${PRODUCT}" "context" 1
    ${EndIf}
    ${If} $1 == ""  ; the program's first start, which begins with entries
      ${WordFind} "${VERSION}" "." "+2{*" $1
      WriteRegStr HKCU "Software\${PRODUCT}" "" "$1"
    ${EndIf}
  ${EndIf}
SectionEnd

Section /o "Icon on the desktop" SectionDesktopIcon
  CreateShortcut "$DESKTOP\${PRODUCT}.lnk" "$INSTDIR\quorvel.exe"
SectionEnd

Section /o "Start with Windows, in the tray" SectionAutostart
  CreateShortcut "$SMSTARTUP\${PRODUCT}.lnk" "$INSTDIR\quorvel.exe" "/startup"
SectionEnd

Section /o "quorvel-cli as a command in every terminal" SectionPath
  StrCpy $R0 "add"
  Call ChangePath
SectionEnd

Var VerbsChosenFor

; A newer version does not bring back entries that were left out or taken away with the older one.
Function ChooseVerbs
  ${If} $VerbsChosenFor == $MultiUser.InstallMode
    Return
  ${EndIf}
  StrCpy $VerbsChosenFor $MultiUser.InstallMode
  !insertmacro SelectSection ${SectionVerbs}
  ReadRegStr $0 SHCTX "${INSTALLED}" "DisplayVersion"
  ReadRegStr $1 SHCTX "Software\Classes\Directory\shell\${PRODUCT}\command" ""
  ReadRegDWORD $2 HKCU "Software\${PRODUCT}" "context"
  ${If} $0 != ""
    ${If} $1 == ""
    ${OrIf} $2 = 1
      !insertmacro UnselectSection ${SectionVerbs}
    ${EndIf}
  ${EndIf}
FunctionEnd

; Where nobody sees the page, /PATH chooses that, and /NOMENU leaves the entries out.
Function ChooseBySwitches
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/PATH" $1
  ${IfNot} ${Errors}
    !insertmacro SelectSection ${SectionPath}
  ${EndIf}
  ClearErrors
  ${GetOptions} $0 "/NOMENU" $1
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${SectionVerbs}
  ${EndIf}
FunctionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${SectionPrograms} "The program, its companion for the terminal, and the help."
  !insertmacro MUI_DESCRIPTION_TEXT ${SectionVerbs} "Hand files and folders over with a right click. Preferences change it later."
  !insertmacro MUI_DESCRIPTION_TEXT ${SectionDesktopIcon} "A second way to start ${PRODUCT}, beside the Start menu."
  !insertmacro MUI_DESCRIPTION_TEXT ${SectionAutostart} "${PRODUCT} waits beside the clock from the moment you sign in."
  !insertmacro MUI_DESCRIPTION_TEXT ${SectionPath} "Puts the program's folder on the PATH, for terminals opened from then on."
!insertmacro MUI_FUNCTION_DESCRIPTION_END

; Explorer starts it without the administrator's rights that the setup may have; with them it would not take what is
; dropped on it.
Function RunAsTheUser
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\quorvel.exe"'
FunctionEnd

; --- Removing -----------------------------------------------------------------------------------------------------------

Function un.onInit
  !insertmacro MULTIUSER_UNINIT
  ; Whose installation this is, its folder tells.
  ReadRegStr $0 HKCU "${INSTALLED}" "InstallLocation"
  ${If} $0 == $INSTDIR
    Call un.MultiUser.InstallMode.CurrentUser
  ${ElseIf} $MultiUser.Privileges == "Admin"
    Call un.MultiUser.InstallMode.AllUsers
  ${Else}
    MessageBox MB_OK|MB_ICONSTOP "Only an administrator can remove what was installed for all users." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
FunctionEnd

; What the program's own uninstall run leaves of its entry at a type: one of this installation, or an empty key. In both
; hives, as it may have run with other rights than the setup.
!macro DELETE_VERB HIVE TYPE
  ReadRegStr $0 ${HIVE} "Software\Classes\${TYPE}\shell\${PRODUCT}\command" ""
  ClearErrors
  ${If} $0 == '"$INSTDIR\quorvel.exe" %1'
    DeleteRegKey ${HIVE} "Software\Classes\${TYPE}\shell\${PRODUCT}"
  ${Else}
    DeleteRegKey /ifempty ${HIVE} "Software\Classes\${TYPE}\shell\${PRODUCT}"
  ${EndIf}
  ${IfNot} ${Errors}
    DeleteRegKey /ifempty ${HIVE} "Software\Classes\${TYPE}\shell"
    DeleteRegKey /ifempty ${HIVE} "Software\Classes\${TYPE}"
  ${EndIf}
!macroend

!macro DELETE_VERBS HIVE
  !insertmacro DELETE_VERB ${HIVE} "Directory"
  StrCpy $R0 0
  ${Do}
    EnumRegKey $R1 ${HIVE} "Software\Classes\SystemFileAssociations" $R0
    ${IfThen} $R1 == "" ${|} ${ExitDo} ${|}
    IntOp $R0 $R0 + 1
  ${Loop}
  ${While} $R0 > 0  ; from the last to the first, as deleting moves those behind
    IntOp $R0 $R0 - 1
    EnumRegKey $R1 ${HIVE} "Software\Classes\SystemFileAssociations" $R0
    !insertmacro DELETE_VERB ${HIVE} "SystemFileAssociations\$R1"
  ${EndWhile}
  DeleteRegKey /ifempty ${HIVE} "Software\Classes\SystemFileAssociations"
!macroend

Section "Uninstall"
  Call un.CloseRunning
  SetOutPath "$INSTDIR"  ; the program's own uninstall run looks into the current folder
  ExecWait '"$INSTDIR\quorvel.exe" /uninstall'
  SetOutPath "$TEMP"

  Delete "$INSTDIR\quorvel.exe"
  Delete "$INSTDIR\quorvel-cli.exe"
  Delete "$INSTDIR\${HELP}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\${PRODUCT}.lnk"
  Delete "$DESKTOP\${PRODUCT}.lnk"
  Delete "$SMSTARTUP\${PRODUCT}.lnk"

  StrCpy $R0 "remove"
  Call un.ChangePath
  !insertmacro DELETE_VERBS HKCU
  !insertmacro DELETE_VERBS HKLM
  DeleteRegKey SHCTX "${APP_PATHS}\quorvel.exe"
  DeleteRegKey SHCTX "${APP_PATHS}\quorvel-cli.exe"
  DeleteRegKey SHCTX "${INSTALLED}"
SectionEnd
