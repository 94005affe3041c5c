; What the installer and its uninstaller both ask of files and folders; included by installer.nsi.
;
; Functions take what stands on the stack, and leave their answer there; "" is no.

Var reason
Var item
Var linkOnWay
Var version
Var kept

!macro forEachVersion un function
  GetFunctionAddress $version ${function}
  Call ${un}forEachVersion
!macroend

!macro commonFunctions un
; PATH: "1" when it is a link or a junction to another place. Behind one everything is somebody else's.
Function ${un}isLink
  Exch $0
  Push $1
  Push $2
  Push $3
  Push $4
  System::Alloc 592
  Pop $1
  System::Call 'kernel32::FindFirstFileW(w r0, p r1) p.r2'
  StrCpy $0 ""
  ${If} $2 != -1
    System::Call 'kernel32::FindClose(p r2)'
    System::Call '*$1(i.r3, &v32, i.r4)'
    IntOp $3 $3 & 0x400
    ; Files that a cloud keeps have a tag of another kind; the bit says "another place".
    IntOp $2 $4 & 0x20000000
    ${If} $3 <> 0
      ${If} $4 = 0
      ${OrIf} $2 <> 0
        StrCpy $0 1
      ${EndIf}
    ${EndIf}
  ${EndIf}
  System::Free $1
  Pop $4
  Pop $3
  Pop $2
  Pop $1
  Exch $0
FunctionEnd

; Leaves in $linkOnWay the first folder on the way from $INSTDIR to $item that is a link, or nothing.
Function ${un}findLink
  Push $0
  Push $1
  StrCpy $linkOnWay ""
  StrCpy $0 1
  ${Do}
    StrCpy $1 $item 1 $0
    ${If} $1 == "\"
      StrCpy $1 $item $0
      Push "$INSTDIR\$1"
      Call ${un}isLink
      Pop $linkOnWay
      ${If} $linkOnWay != ""
        StrCpy $linkOnWay "$INSTDIR\$1"
        StrCpy $1 ""
      ${Else}
        StrCpy $1 "\"
      ${EndIf}
    ${EndIf}
    IntOp $0 $0 + 1
  ${LoopUntil} $1 == ""
  Pop $1
  Pop $0
FunctionEnd

; PATH of a file: "1" when a program runs from it or holds it open.
Function ${un}isInUse
  Exch $0
  Push $1
  Push $2
  Push $3
  Push $4
  ; To write and to remove; everybody else may do everything; a link itself, not what it points to.
  System::Call 'kernel32::CreateFileW(w r0, i 0x40010000, i 7, p 0, i 3, i 0x200000, p 0) p.r1 ?e'
  Pop $2
  ${If} $1 = -1
  ${AndIf} $2 = 5
    ; A file that is read-only says no more than that, whoever uses it: it is none for the moment. No
    ; folder, nor a link.
    System::Call 'kernel32::GetFileAttributesW(w r0) i.r3'
    IntOp $4 $3 & 0x411
    ${If} $4 = 1
      IntOp $4 $3 ^ 0x81
      System::Call 'kernel32::SetFileAttributesW(w r0, i r4) i.r4'
      ${If} $4 <> 0
        System::Call 'kernel32::CreateFileW(w r0, i 0x40010000, i 7, p 0, i 3, i 0x200000, p 0) p.r1 ?e'
        Pop $2
        System::Call 'kernel32::SetFileAttributesW(w r0, i r3)'
      ${EndIf}
    ${EndIf}
  ${EndIf}
  StrCpy $0 ""
  ${If} $1 != -1
    System::Call 'kernel32::CloseHandle(p r1)'
  ${ElseIf} $2 = 32
  ${OrIf} $2 = 33
    StrCpy $0 1
  ${EndIf}
  Pop $4
  Pop $3
  Pop $2
  Pop $1
  Exch $0
FunctionEnd

; PATH: what it is on its drive, the same for all names that it has; "" when there is nothing.
Function ${un}identityOf
  Exch $0
  Push $1
  Push $2
  Push $3
  Push $4
  System::Call 'kernel32::CreateFileW(w r0, i 0, i 7, p 0, i 3, i 0x2000000, p 0) p.r1'
  StrCpy $0 ""
  ${If} $1 != -1
    System::Alloc 52
    Pop $2
    System::Call 'kernel32::GetFileInformationByHandle(p r1, p r2) i.r3'
    ${If} $3 <> 0
      System::Call '*$2(&v28, i.r3, &v12, i.r0, i.r4)'
      StrCpy $0 "$3 $0 $4"
    ${EndIf}
    System::Free $2
    System::Call 'kernel32::CloseHandle(p r1)'
  ${EndIf}
  Pop $4
  Pop $3
  Pop $2
  Pop $1
  Exch $0
FunctionEnd

; FOLDER: removes it with what is in it. A link in it goes itself; what it points to stays.
Function ${un}removeTree
  Exch $0
  Push $1
  Push $2
  Push $3
  FindFirst $1 $2 "$0\*.*"
  ${DoWhile} $2 != ""
    ${If} $2 != "."
    ${AndIf} $2 != ".."
      ${If} ${FileExists} "$0\$2\*.*"
        Push "$0\$2"
        Call ${un}isLink
        Pop $3
        ${If} $3 == ""
          Push "$0\$2"
          Call ${un}removeTree
        ${Else}
          RMDir "$0\$2"
        ${EndIf}
      ${Else}
        Delete "$0\$2"
        ; A junction whose target is gone.
        RMDir "$0\$2"
      ${EndIf}
    ${EndIf}
    FindNext $1 $2
  ${Loop}
  FindClose $1
  RMDir "$0"
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

; "1" when ${STAGE} is what an installer that was broken off has left.
Function ${un}isStage
  Push $0
  Push "${STAGE}"
  Call ${un}isLink
  Pop $0
  ${If} $0 != ""
    StrCpy $0 ""
  ${ElseIf} ${FileExists} "${STAGE}\new-files.txt"
  ${OrIf} ${FileExists} "${STAGE}\old-files.txt"
    StrCpy $0 1
  ${Else}
    ; The first that is made, and the last that goes.
    RMDir "${STAGE}"
  ${EndIf}
  Exch $0
FunctionEnd

; FROM, TO: renames, with the folders that needs; sets the error flag when it fails. What guards a
; machine against malware opens new programs for a moment, in which they cannot be moved; no folder can
; while any file below it is open.
Function ${un}move
  Exch $1
  Exch
  Exch $0
  Push $2
  ${GetParent} "$1" $2
  CreateDirectory "$2"
  StrCpy $2 0
  ${Do}
    ClearErrors
    Rename "$0" "$1"
    ${IfNot} ${Errors}
      StrCpy $2 ""
      ${ExitDo}
    ${EndIf}
    IntOp $2 $2 + 1
    ${If} $2 > 10
    ${OrIfNot} ${FileExists} "$0"
    ${OrIf} ${FileExists} "$1"
      ${ExitDo}
    ${EndIf}
    Sleep 100
  ${Loop}
  ${If} $2 != ""
    SetErrors
  ${EndIf}
  Pop $2
  Pop $0
  Pop $1
FunctionEnd

; What of the player's had to make room for new files leaves ${STAGE}: $kept is the folder where it is then,
; which is the old one when it cannot.
Function ${un}keepFiles
  Push $0
  Push $1
  ${If} ${FileExists} "${STAGE}\own\*.*"
    StrCpy $0 "$INSTDIR\Kept files"
    StrCpy $1 1
    ${DoWhile} ${FileExists} "$0"
      IntOp $1 $1 + 1
      StrCpy $0 "$INSTDIR\Kept files $1"
    ${Loop}
    Push "${STAGE}\own"
    Push "$0"
    Call ${un}move
    ${If} ${Errors}
      StrCpy $0 "${STAGE}\own"
    ${EndIf}
    StrCpy $kept $0
  ${EndIf}
  Pop $1
  Pop $0
FunctionEnd

; Removes ${STAGE}, if it is one; its lists, by which it is known, at last.
Function ${un}removeStage
  Push $0
  Call ${un}isStage
  Pop $0
  ${If} $0 != ""
    Call ${un}keepFiles
    Push "${STAGE}\old"
    Call ${un}removeTree
    Push "${STAGE}\new"
    Call ${un}removeTree
    Push "${STAGE}\none"
    Call ${un}removeTree
    ; What is in use stays for another try, and has to be known then.
    ${IfNot} ${FileExists} "${STAGE}\new\*.*"
    ${AndIfNot} ${FileExists} "${STAGE}\none\*.*"
    ${AndIfNot} ${FileExists} "${STAGE}\old\*.*"
    ${AndIfNot} ${FileExists} "${STAGE}\own\*.*"
      Push "${STAGE}"
      Call ${un}removeTree
    ${EndIf}
  ${EndIf}
  Pop $0
FunctionEnd

; NAME: "1" when it has a digit, or is that of what an extractor left.
Function ${un}isVersion
  Exch $0
  Push $1
  Push $2
  StrCpy $1 "0123456789"
  System::Call 'shlwapi::StrCSpnW(w r0, w r1) i.r2'
  StrLen $1 $0
  StrCpy $0 $0 7
  ${If} $2 < $1
  ${OrIf} $0 == ".unzip-"
    StrCpy $0 1
  ${Else}
    StrCpy $0 ""
  ${EndIf}
  Pop $2
  Pop $1
  Exch $0
FunctionEnd

; CLIENT'S FOLDER: calls $version for the path of each version in it.
Function ${un}forEachVersionOf
  Exch $0
  Push $1
  Push $2
  Push $3
  Push $4
  Push $0
  Call ${un}isLink
  Pop $3
  ${If} $3 == ""
  ${AndIf} ${FileExists} "$0\*.*"
    FindFirst $1 $2 "$0\*.*"
    ${DoWhile} $2 != ""
      Push $2
      Call ${un}isVersion
      Pop $3
      Push "$0\$2"
      Call ${un}isLink
      Pop $4
      ${If} $3 != ""
      ${AndIf} $4 == ""
      ${AndIf} ${FileExists} "$0\$2\*.*"
        Push "$0\$2"
        Call $version
      ${EndIf}
      FindNext $1 $2
    ${Loop}
    FindClose $1
  ${EndIf}
  Pop $4
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

; Calls $version for every version of every game.
Function ${un}forEachVersion
  Push $0
  Push $1
  Push $2
  Push $3
  ; Games may have paths of any length, which Windows takes in this form alone.
  StrCpy $3 $INSTDIR
  StrCpy $0 $INSTDIR 1 1
  ${If} $0 == ":"
    StrCpy $3 "\\?\$INSTDIR"
  ${EndIf}
  FindFirst $0 $1 "$INSTDIR\*.*"
  ${DoWhile} $1 != ""
    Push "$INSTDIR\$1"
    Call ${un}isLink
    Pop $2
    ${If} $1 != "."
    ${AndIf} $1 != ".."
    ${AndIf} $2 == ""
      Push "$3\$1\Official"
      Call ${un}forEachVersionOf
      Push "$3\$1\Beta"
      Call ${un}forEachVersionOf
    ${EndIf}
    FindNext $0 $1
  ${Loop}
  FindClose $0
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

; Two at once would replace and remove each other's files, in two sessions of the machine as well.
Function ${un}stayAlone
  Push $0
  Push $1
  StrCpy $0 "Global\${NAME} Setup"
  ; Windows closes it when this program ends, however it does.
  System::Call 'kernel32::CreateMutexW(p 0, i 0, w r0) p.r1 ?e'
  Pop $0
  ; It is there already, or another player's.
  ${If} $0 = 183
  ${OrIf} $0 = 5
    MessageBox MB_OK|MB_ICONSTOP \
      "The ${NAME} is being installed or removed already. Finish that, then try again." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  Pop $1
  Pop $0
FunctionEnd
!macroend
