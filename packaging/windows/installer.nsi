; The installer for players, made by package.sh, which hands over PRODUCT (a script with the name, the
; version and so on), INSTALL_FILES and UNINSTALL_FILES (the commands that install and remove the
; files), SIZE (in KiB), SIGN (the program that signs the uninstaller, or leaves it alone), UNINSTALLER
; (where a copy of that goes) and OUTPUT.
;
; For one player, without administrator rights: the launcher writes the games beside itself.
;
; Besides the usual /S and /D=FOLDER: "uninstall.exe /S /REMOVEGAMES" also removes what the launcher
; downloaded and saved. Results: 0 done, 1 ended by the player, 2 the launcher is running or files
; are in use, 3 the folder is not one the launcher may have for itself, 4 wrong kind of Windows.

; The program is 64-bit only, and so is its installer.
Target amd64-unicode
Unicode true
ManifestDPIAware true
ManifestSupportedOS all
RequestExecutionLevel user
SetCompressor /SOLID lzma
CRCCheck force

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include x64.nsh

!include "${PRODUCT}"
!define PROGRAM "emberwake-launcher.exe"
!define OWN_KEY "Software\${NAME}"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"

Name "${NAME}" "${NAME_IN_WINDOWS}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\${NAME}"
; An update goes where the launcher is, and a new installation to the games left by an old one.
InstallDirRegKey HKCU "${OWN_KEY}" "InstallFolder"
BrandingText "${NAME} ${VERSION}"
; Before it is packed: on a player's machine nobody could sign it.
!uninstfinalize '"${SIGN}" "%1"' = 0
!uninstfinalize 'cp "%1" "${UNINSTALLER}"' = 0

VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileDescription "${NAME} Setup"
VIAddVersionKey FileVersion "${VERSION}"
; These two may have quotation marks in them.
VIAddVersionKey CompanyName `${PUBLISHER}`
VIAddVersionKey LegalCopyright `${COPYRIGHT}`

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE leaveDirectoryPage
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Start the ${NAME_IN_WINDOWS}"
!define MUI_FINISHPAGE_RUN_FUNCTION startProgram
!insertmacro MUI_PAGE_FINISH

!define MUI_COMPONENTSPAGE_NODESC
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE English

Var reason

; Two folders are the same if only case and a closing backslash differ.
!macro refuseFolder folder
  ${If} $INSTDIR == "${folder}"
    StrCpy $reason "$INSTDIR belongs to Windows or to you. Choose a folder for the launcher alone."
  ${EndIf}
!macroend

; Leaves in $reason why the launcher must not have $INSTDIR, or nothing. The launcher manages the
; folder as its own: it removes old versions in it, and the uninstaller may remove all of it.
!macro checkFolderFunction prefix
  Function ${prefix}checkFolder
    Push $0
    StrCpy $reason ""
    ; "C:\Games\" is "C:\Games", and "C:\Games\..\Windows" is what it means.
    GetFullPathName $0 "$INSTDIR"
    ${If} $0 != ""
      StrCpy $INSTDIR $0
    ${EndIf}
    StrCpy $0 $INSTDIR 1 -1
    StrLen $1 $INSTDIR
    ${If} $0 == "\"
    ${AndIf} $1 > 3
      StrCpy $INSTDIR $INSTDIR -1
      StrLen $1 $INSTDIR
    ${EndIf}
    ${If} $1 < 4
      StrCpy $reason "$INSTDIR is a whole drive. Choose a folder for the launcher alone."
    ${EndIf}
    !insertmacro refuseFolder $PROGRAMFILES
    !insertmacro refuseFolder $PROGRAMFILES32
    !insertmacro refuseFolder $PROGRAMFILES64
    !insertmacro refuseFolder $COMMONFILES
    !insertmacro refuseFolder $SYSDIR
    !insertmacro refuseFolder $PROFILE
    !insertmacro refuseFolder $DESKTOP
    !insertmacro refuseFolder $DOCUMENTS
    !insertmacro refuseFolder $APPDATA
    !insertmacro refuseFolder $LOCALAPPDATA
    !insertmacro refuseFolder "$LOCALAPPDATA\Programs"
    !insertmacro refuseFolder $STARTMENU
    !insertmacro refuseFolder $SMPROGRAMS
    !insertmacro refuseFolder $TEMP
    ; Windows itself, and everything in it.
    StrLen $1 "$WINDIR\"
    StrCpy $0 "$INSTDIR\" $1
    ${If} $0 == "$WINDIR\"
      StrCpy $reason "$INSTDIR belongs to Windows. Choose a folder for the launcher alone."
    ${EndIf}
    Pop $0
  FunctionEnd

  ; Leaves in $reason why the files cannot be replaced or removed now, or nothing. Windows lets nobody
  ; write to the file of a program that runs.
  Function ${prefix}checkRunning
    Push $0
    StrCpy $reason ""
    ${If} ${FileExists} "$INSTDIR\${PROGRAM}"
      ClearErrors
      FileOpen $0 "$INSTDIR\${PROGRAM}" a
      ${If} ${Errors}
        StrCpy $reason "The ${NAME} is running, or its files cannot be written. Close it and try again."
      ${Else}
        FileClose $0
      ${EndIf}
    ${EndIf}
    Pop $0
  FunctionEnd

  Function ${prefix}waitUntilClosed
    again:
      Call ${prefix}checkRunning
      ${If} $reason != ""
        ; Silent: the answer is "Cancel".
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$reason" /SD IDCANCEL IDRETRY again
        SetErrorLevel 2
        Quit
      ${EndIf}
  FunctionEnd
!macroend
!insertmacro checkFolderFunction ""
!insertmacro checkFolderFunction "un."

; Besides: a folder with somebody else's files in it is not the launcher's. One where the launcher is
; or was may be full of games.
Function checkOwnFolder
  Push $0
  Call checkFolder
  ${If} $reason == ""
  ${AndIfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    ReadRegStr $0 HKCU "${OWN_KEY}" "InstallFolder"
    ${If} $0 != $INSTDIR
      ${DirState} "$INSTDIR" $0
      ${If} $0 == 1
        StrCpy $reason "$INSTDIR holds other files. Choose an empty or a new folder for the launcher."
      ${EndIf}
    ${EndIf}
  ${EndIf}
  Pop $0
FunctionEnd

Function leaveDirectoryPage
  Call checkOwnFolder
  ${If} $reason != ""
    MessageBox MB_OK|MB_ICONEXCLAMATION "$reason"
    Abort
  ${EndIf}
FunctionEnd

Function .onInit
  SetShellVarContext current
  ${IfNot} ${RunningX64}
    MessageBox MB_OK|MB_ICONSTOP "The ${NAME} needs a 64-bit Windows." /SD IDOK
    SetErrorLevel 4
    Quit
  ${EndIf}
FunctionEnd

Section
  ; Once more: a silent installation has no page.
  Call checkOwnFolder
  ${If} $reason != ""
    MessageBox MB_OK|MB_ICONSTOP "$reason" /SD IDOK
    SetErrorLevel 3
    Quit
  ${EndIf}
  Call waitUntilClosed

  ; The old version's own list of files goes first: a library that is not needed any more would stay
  ; for ever. Games and settings are not on it.
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
    ExecWait '"$INSTDIR\uninstall.exe" /S /UPDATE _?=$INSTDIR'
  ${EndIf}

  ClearErrors
  SetOverwrite on
  !include "${INSTALL_FILES}"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ${If} ${Errors}
    MessageBox MB_OK|MB_ICONSTOP "Not all files could be written to $INSTDIR." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}

  ; The working directory is the current output folder: the launcher finds everything from there.
  CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\${PROGRAM}" "" "$INSTDIR\${PROGRAM}" 0

  WriteRegStr HKCU "${OWN_KEY}" "InstallFolder" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM},0"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" `${PUBLISHER}`
  WriteRegStr HKCU "${UNINSTALL_KEY}" "URLInfoAbout" "${URL}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE}
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Function startProgram
  SetOutPath "$INSTDIR"
  Exec '"$INSTDIR\${PROGRAM}"'
FunctionEnd

Section "un.${NAME}" unProgram
  SectionIn RO
  Call un.checkFolder
  ; An uninstaller that somebody copied elsewhere must not clear away the files of another program.
  ${If} $reason == ""
  ${AndIfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    ReadRegStr $0 HKCU "${OWN_KEY}" "InstallFolder"
    ${If} $0 != $INSTDIR
      StrCpy $reason "The ${NAME} is not in $INSTDIR."
    ${EndIf}
  ${EndIf}
  ${If} $reason != ""
    MessageBox MB_OK|MB_ICONSTOP "$reason" /SD IDOK
    SetErrorLevel 3
    Quit
  ${EndIf}
  Call un.waitUntilClosed

  ; A folder that is somebody's current one cannot be removed.
  SetOutPath "$TEMP"
  !include "${UNINSTALL_FILES}"
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/UPDATE" $1
  ${IfNot} ${Errors}
    Quit
  ${EndIf}
  Delete "$INSTDIR\uninstall.exe"
  Delete "$SMPROGRAMS\${NAME}.lnk"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd

; Not chosen unless the player chooses it, and never in a silent run without /REMOVEGAMES.
Section /o "un.Downloaded games, settings and cached pictures" unGames
  ; The folder was checked above, and the launcher was in it.
  Push "$INSTDIR"
  Call un.removeContents
SectionEnd

Section "un."
  RMDir "$INSTDIR"
  ${IfNot} ${FileExists} "$INSTDIR\*.*"
    ; Otherwise a new installation looks here, and finds the games again.
    DeleteRegKey HKCU "${OWN_KEY}"
  ${EndIf}
SectionEnd

; Removes what is in the folder on the stack. A link or junction is removed itself; what it points
; to belongs to somebody else.
Function un.removeContents
  Exch $0
  Push $1
  Push $2
  Push $3
  FindFirst $1 $2 "$0\*.*"
  ${DoWhile} $2 != ""
    ${If} $2 != "."
    ${AndIf} $2 != ".."
      System::Call 'kernel32::GetFileAttributesW(w "$0\$2") i.r3'
      ${If} $3 != -1
        IntOp $4 $3 & 0x10
        IntOp $3 $3 & 0x400
        ${If} $4 == 0
          Delete "$0\$2"
        ${Else}
          ${If} $3 == 0
            Push "$0\$2"
            Call un.removeContents
          ${EndIf}
          RMDir "$0\$2"
        ${EndIf}
      ${EndIf}
    ${EndIf}
    FindNext $1 $2
  ${Loop}
  FindClose $1
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

Function un.onInit
  SetShellVarContext current
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/REMOVEGAMES" $1
  ${IfNot} ${Errors}
    SectionGetFlags ${unGames} $0
    IntOp $0 $0 | ${SF_SELECTED}
    SectionSetFlags ${unGames} $0
  ${EndIf}
FunctionEnd

Function un.onSelChange
  SectionGetFlags ${unGames} $0
  IntOp $0 $0 & ${SF_SELECTED}
  ${If} $0 <> 0
    MessageBox MB_YESNO|MB_ICONEXCLAMATION|MB_DEFBUTTON2 \
      "Everything in $INSTDIR will be removed: all downloaded games with their data, and the settings. Really?" \
      IDYES keep
    SectionGetFlags ${unGames} $0
    IntOp $0 $0 ^ ${SF_SELECTED}
    SectionSetFlags ${unGames} $0
    keep:
  ${EndIf}
FunctionEnd
