; The installer for players, made by package.sh, which hands over PRODUCT (a script with the name, the
; version and so on), FILES (macros that unpack and name the files, by list-files.sh), FILE_LIST (the
; package's package-files.txt), SIZE (in KiB), SIGN (the program that signs the uninstaller, or leaves
; it alone), UNINSTALLER (where a copy of that goes) and OUTPUT.
;
; For one player, without administrator rights: the launcher writes the games beside itself.
;
; Besides the usual /S and /D=FOLDER: /DOWNGRADE installs over a newer version without a question, and
; "uninstall.exe /S /REMOVEGAMES" also removes what the launcher downloaded and saved. Results: 0 done,
; 1 ended by the player, 2 the launcher is running, files are in use or another installer is at work,
; 3 the folder is not one the launcher may have for itself, 4 wrong kind of Windows, 5 files cannot be
; written, 6 a newer version is installed, 7 begun and not finished. After 1 to 6 nothing was changed, but
; that a broken-off installation may have been taken back.

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
!include WordFunc.nsh
!include x64.nsh

!include "${PRODUCT}"
!include "${FILES}"
!define PROGRAM "emberwake-launcher.exe"
!define OWN_KEY "Software\${NAME}"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
; Where the files wait for their places, and where those before them go.
!define STAGE "$INSTDIR\launcher-setup.tmp"
; In letters. Most of Windows knows folders of 247; "\launcher-setup.tmp\none\" has 25.
!define /math LONGEST_FOLDER 222 - ${LONGEST_FILE}

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

!include installer-common.nsh
!insertmacro commonFunctions ""
!insertmacro commonFunctions "un."
!include installer-folders.nsh
!include installer-update.nsh
!include installer-games.nsh

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
  Call stayAlone
FunctionEnd

; A $problem with its $code ends the installation.
Function endWithProblem
  MessageBox MB_OK|MB_ICONSTOP "$problem" /SD IDOK
  SetErrorLevel $code
  Quit
FunctionEnd

; A newer version may have settings and games that this one does not understand.
Function checkVersion
  GetDLLVersion "$INSTDIR\${PROGRAM}" $0 $1
  ${If} ${Errors}
    Return
  ${EndIf}
  IntOp $2 $0 >> 16
  IntOp $2 $2 & 0xFFFF
  IntOp $3 $0 & 0xFFFF
  IntOp $4 $1 >> 16
  IntOp $4 $4 & 0xFFFF
  StrCpy $0 "$2.$3.$4"
  ${VersionCompare} "$0" "${VERSION}" $1
  ${If} $1 <> 1
    Return
  ${EndIf}
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/DOWNGRADE" $2
  ${IfNot} ${Errors}
    Return
  ${EndIf}
  MessageBox MB_YESNO|MB_ICONEXCLAMATION|MB_DEFBUTTON2 \
    "Version $0 is installed, which is newer than ${VERSION}. Install the older version?" /SD IDNO IDYES older
  ${If} ${Silent}
    SetErrorLevel 6
  ${Else}
    SetErrorLevel 1
  ${EndIf}
  Quit
  older:
FunctionEnd

Section
  ; What functions unpack is not counted by itself; the page with the folder says when there is no room.
  AddSize ${SIZE}
  ; Once more: a silent installation has no page.
  Call checkOwnFolder
  ${If} $reason != ""
    StrCpy $problem $reason
    StrCpy $code 3
    Call endWithProblem
  ${EndIf}

  ; What an installer that was broken off has left.
  ${If} ${FileExists} "${STAGE}\*.*"
    Call rollBack
    ${If} $problem == ""
    ${AndIf} ${FileExists} "${STAGE}"
      StrCpy $problem "${STAGE} cannot be removed: it is in use. Close the programs that use it and try again."
      StrCpy $code 2
    ${EndIf}
    ${If} $problem != ""
      Call endWithProblem
    ${EndIf}
  ${EndIf}
  ClearErrors
  Call checkVersion
  again:
    StrCpy $problem ""
    Call readLists
    ${If} $problem == ""
      Call checkItems
    ${EndIf}
    ${If} $problem != ""
      ; Silent: the answer is "Cancel".
      MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$problem" /SD IDCANCEL IDRETRY again
      SetErrorLevel $code
      Quit
    ${EndIf}

  ${IfNot} ${FileExists} "$INSTDIR\*.*"
    StrCpy $madeFolder 1
  ${EndIf}
  Call unpackFiles
  ${If} $problem == ""
    Call replaceFiles
  ${EndIf}
  ${If} $problem != ""
    Call rollBack
    ${If} $heldBack == ""
      StrCpy $problem "$problem Nothing was changed."
    ${EndIf}
    Call endWithProblem
  ${EndIf}
  Call cleanUp
  SetOutPath "$INSTDIR"

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

  ${If} $kept != ""
    MessageBox MB_OK|MB_ICONINFORMATION \
      "In the places of new files of the ${NAME} there were others, which are in $kept now." /SD IDOK
  ${EndIf}
SectionEnd

; Something ended the section halfway: no room, as a rule.
Function .onInstFailed
  Call rollBack
  SetErrorLevel 5
FunctionEnd

Function startProgram
  SetOutPath "$INSTDIR"
  Exec '"$INSTDIR\${PROGRAM}"'
FunctionEnd

Section "un.${NAME}" unProgram
  SectionIn RO
  Call un.findRegistered
  ; An uninstaller that somebody copied elsewhere must not clear away the files of another program.
  ; A removal that could not be finished has left the list of its files.
  ${IfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
  ${AndIfNot} ${FileExists} "$INSTDIR\package-files.txt"
  ${AndIf} $registered == ""
    MessageBox MB_OK|MB_ICONSTOP "The ${NAME} is not in $INSTDIR." /SD IDOK
    SetErrorLevel 3
    Quit
  ${EndIf}
  again:
    Call un.checkItems
    ${If} $reason == ""
      Call un.checkGames
    ${EndIf}
    ${If} $reason != ""
      MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$reason" /SD IDCANCEL IDRETRY again
      SetErrorLevel 2
      Quit
    ${EndIf}

  ; A folder that is somebody's current one cannot be removed.
  SetOutPath "$TEMP"
  !insertmacro packageFiles un.removeItemNow
  !insertmacro packageFolders un.removeFolder
  Call un.removeStage
  ; It holds what is the player's, or is in use.
  Call un.isStage
  Pop $0
  ${If} $0 != ""
    StrCpy $left "${STAGE}"
  ${EndIf}
  ${If} $left == ""
    !insertmacro un.removeItem "package-files.txt"
  ${EndIf}
  ${If} $left != ""
    MessageBox MB_OK|MB_ICONSTOP \
      "$left could not be removed, other files were. Close the programs that use it and try again." /SD IDOK
    SetErrorLevel 7
    Quit
  ${EndIf}
  Delete "$INSTDIR\uninstall.exe"
  ; Those of another folder's launcher stay.
  ${If} $registered != ""
    Delete "$SMPROGRAMS\${NAME}.lnk"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
  ${EndIf}
SectionEnd

; Not chosen unless the player chooses it, and never in a silent run without /REMOVEGAMES.
Section /o "un.Downloaded games, settings and cached pictures" unGames
  Call un.removeGames
SectionEnd

Section "un."
  RMDir "$INSTDIR"
  ${If} $left != ""
    MessageBox MB_OK|MB_ICONEXCLAMATION "$left could not be removed." /SD IDOK
    SetErrorLevel 7
  ${EndIf}
  ${IfNot} ${FileExists} "$INSTDIR\*.*"
  ${AndIf} $registered != ""
    ; Otherwise a new installation looks here, and finds the games again.
    DeleteRegKey HKCU "${OWN_KEY}"
  ${EndIf}
SectionEnd

Function un.onInit
  SetShellVarContext current
  Call un.stayAlone
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
      "All games that the launcher downloaded into $INSTDIR will be removed with their data, and the settings. Really?" \
      IDYES keep
    SectionGetFlags ${unGames} $0
    IntOp $0 $0 ^ ${SF_SELECTED}
    SectionSetFlags ${unGames} $0
    keep:
  ${EndIf}
FunctionEnd

; Whether what the launcher downloaded and saved may go now: nothing of it goes while a game runs.
Function un.checkGames
  Push $0
  SectionGetFlags ${unGames} $0
  IntOp $0 $0 & ${SF_SELECTED}
  ${If} $0 <> 0
    !insertmacro forEachVersion "un." un.checkTree
  ${EndIf}
  Pop $0
FunctionEnd
