; What the uninstaller removes; included by installer.nsi.
;
; The launcher keeps games and settings beside itself, and a player may keep something of their own
; there. So the folder is not simply emptied. What counts as the launcher's is what only it makes:
; - the files of the package;
; - settings.txt, offline.txt and the pictures of slides and tiles, which have fixed names;
; - SERVER\Official\VERSION and SERVER\Beta\VERSION, with all that is in them: the launcher itself
;   removes such a folder whole when it updates. A version has a digit in its name. What an extractor
;   that was killed has left beside it goes, too; SERVER and the rest only when they are empty then;
; - pictures and archives that the launcher's last document (offline.txt) names.
; Everything else stays, and so does a link in the place of a folder, with all that is behind it: games
; that a player has moved to another drive.

Var registered
Var left
Var document

; "1" in $registered: this folder's launcher is the one that Windows knows, by whatever name.
Function un.findRegistered
  Push $0
  Push $1
  StrCpy $registered ""
  StrCpy $left ""
  ReadRegStr $0 HKCU "${OWN_KEY}" "InstallFolder"
  Push $0
  Call un.identityOf
  Pop $1
  ${If} $0 == $INSTDIR
    StrCpy $registered 1
  ${ElseIf} $1 != ""
    Push "$INSTDIR"
    Call un.identityOf
    Pop $0
    ${If} $0 == $1
      StrCpy $registered 1
    ${EndIf}
  ${EndIf}
  Pop $1
  Pop $0
FunctionEnd

!macro un.checkItem file
  StrCpy $item "${file}"
  Call un.checkItem
!macroend

Function un.checkItem
  Push $0
  Call un.findLink
  ${If} $reason == ""
  ${AndIf} $linkOnWay == ""
    Push "$INSTDIR\$item"
    Call un.isInUse
    Pop $0
    ${If} $0 != ""
      StrCpy $reason "$INSTDIR\$item is in use: the ${NAME} is running, or another program has it open. Close it and try again."
    ${EndIf}
  ${EndIf}
  Pop $0
FunctionEnd

Function un.checkItems
  StrCpy $reason ""
  !insertmacro packageFiles un.checkItem
FunctionEnd

!macro un.removeItem file
  StrCpy $item "${file}"
  Call un.removeItem
!macroend

; All but the list, by which another try knows whose folder this is.
!macro un.removeItemNow file
  !if "${file}" != "package-files.txt"
    !insertmacro un.removeItem "${file}"
  !endif
!macroend

Function un.removeItem
  Call un.findLink
  ${If} $linkOnWay == ""
  ${AndIfNot} ${FileExists} "$INSTDIR\$item\*.*"
    Delete "$INSTDIR\$item"
    ${If} ${FileExists} "$INSTDIR\$item"
      StrCpy $left "$INSTDIR\$item"
    ${EndIf}
  ${EndIf}
FunctionEnd

!macro un.removeFolder folder
  StrCpy $item "${folder}"
  Call un.removeFolder
!macroend

; Only when it is empty.
Function un.removeFolder
  Push $0
  Push "$INSTDIR\$item"
  Call un.isLink
  Pop $0
  ${If} $0 == ""
    RMDir "$INSTDIR\$item"
  ${EndIf}
  Pop $0
FunctionEnd

; FOLDER: sets $reason when a file in it or below it is in use.
Function un.checkTree
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
        Call un.isLink
        Pop $3
        ${If} $3 == ""
          Push "$0\$2"
          Call un.checkTree
        ${EndIf}
      ${Else}
        Push "$0\$2"
        Call un.isInUse
        Pop $3
        ${If} $3 != ""
          StrCpy $reason "A game is running: $0\$2 is in use. Close it and try again."
        ${EndIf}
      ${EndIf}
    ${EndIf}
    ${If} $reason != ""
      ${ExitDo}
    ${EndIf}
    FindNext $1 $2
  ${Loop}
  FindClose $1
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

Function un.removeVersion
  Exch $0
  Push $0
  Call un.removeTree
  ${If} ${FileExists} "$0\*.*"
    StrCpy $left $0
  ${EndIf}
  Pop $0
FunctionEnd

; The launcher's last document, as a text in memory; 0 when there is none.
Function un.readDocument
  Push $0
  Push $1
  Push $2
  Push $3
  StrCpy $document 0
  ClearErrors
  FileOpen $0 "$INSTDIR\offline.txt" r
  ${IfNot} ${Errors}
    System::Call 'kernel32::GetFileSize(p r0, p 0) i.r1'
    ; In bytes: twice what the launcher reads.
    ${If} $1 > 0
    ${AndIf} $1 < 67108864
      ; Both have zeros behind the text.
      IntOp $2 $1 + 1
      System::Alloc $2
      Pop $2
      System::Call 'kernel32::ReadFile(p r0, p r2, i r1, *i, p 0)'
      IntOp $3 $1 + 1
      IntOp $3 $3 * 2
      System::Alloc $3
      Pop $document
      ; In the encoding that the launcher writes it in, the system's own.
      System::Call 'kernel32::MultiByteToWideChar(i 0, i 0, p r2, i r1, p $document, i r1)'
      System::Free $2
    ${EndIf}
    FileClose $0
  ${EndIf}
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

; TEXT: "1" when the document has it.
Function un.isInDocument
  Exch $0
  ${If} $document P<> 0
    System::Call 'shlwapi::StrStrW(p $document, w r0) p.r0'
  ${Else}
    StrCpy $0 0
  ${EndIf}
  ${If} $0 P= 0
    StrCpy $0 ""
  ${Else}
    StrCpy $0 1
  ${EndIf}
  Exch $0
FunctionEnd

; PATTERN, BEGINNING, ENDING: removes files of $INSTDIR whose names, without the extension, the
; document has between the two.
Function un.removeNamed
  Exch $2 ; ending
  Exch
  Exch $1 ; beginning
  Exch 2
  Exch $0 ; pattern
  Push $3
  Push $4
  Push $5
  FindFirst $3 $4 "$INSTDIR\$0"
  ${DoWhile} $4 != ""
    StrCpy $5 $4 -4
    Push "$1$5$2"
    Call un.isInDocument
    Pop $5
    ${If} $5 != ""
      Delete "$INSTDIR\$4"
    ${EndIf}
    FindNext $3 $4
  ${Loop}
  FindClose $3
  Pop $5
  Pop $4
  Pop $3
  Pop $0
  Pop $2
  Pop $1
FunctionEnd

!macro un.removeNamed pattern beginning ending
  Push `${pattern}`
  Push `${beginning}`
  Push `${ending}`
  Call un.removeNamed
!macroend

Function un.removeGames
  Push $0
  Push $1
  Push $2
  !insertmacro forEachVersion "un." un.removeVersion
  FindFirst $0 $1 "$INSTDIR\*.*"
  ${DoWhile} $1 != ""
    Push "$INSTDIR\$1"
    Call un.isLink
    Pop $2
    ${If} $1 != "."
    ${AndIf} $1 != ".."
    ${AndIf} $2 == ""
      ${If} ${FileExists} "$INSTDIR\$1\Official\*.*"
      ${OrIf} ${FileExists} "$INSTDIR\$1\Beta\*.*"
        StrCpy $item "$1\Official"
        Call un.removeFolder
        StrCpy $item "$1\Beta"
        Call un.removeFolder
        RMDir "$INSTDIR\$1"
        ; The logo.
        Delete "$INSTDIR\$1.png"
      ${EndIf}
    ${EndIf}
    FindNext $0 $1
  ${Loop}
  FindClose $0

  Call un.readDocument
  !insertmacro un.removeNamed "*.png" 'server="' '"'
  !insertmacro un.removeNamed "*.png" "server='" "'"
  !insertmacro un.removeNamed "*.zip" "/" ".zip"
  ${If} $document P<> 0
    System::Free $document
  ${EndIf}
  !insertmacro un.removeItem "homeNewsImageBackground.png"
  !insertmacro un.removeItem "homeNewsImageBackground2.png"
  !insertmacro un.removeItem "homeNewsImageBackground3.png"
  !insertmacro un.removeItem "newsBigBackground.png"
  !insertmacro un.removeItem "newsMedium1Background.png"
  !insertmacro un.removeItem "newsMedium2Background.png"
  !insertmacro un.removeItem "newsSmall1Background.png"
  !insertmacro un.removeItem "newsSmall2Background.png"
  !insertmacro un.removeItem "newsSmall3Background.png"
  !insertmacro un.removeItem "settings.txt"
  !insertmacro un.removeItem "offline.txt"
  Pop $2
  Pop $1
  Pop $0
FunctionEnd
