; Puts the files of this version in place of those of the one before: all of them or none; included by
; installer.nsi.
;
; Everything is unpacked into ${STAGE}\new first. Then the files there were go to ${STAGE}\old and the
; new ones to their places, by renames within one folder, which need no room and are quick; the program
; itself goes first and comes last, so that nobody starts a half of each, and so that its absence beside
; ${STAGE}\old is what says that this was begun and not finished: when a rename fails, or the next
; installer finds it after a power failure, all goes back. ${STAGE}\none notes which files there were
; none of: what lies in a place otherwise is not taken for a new file, however often all goes back.
; What lies in the place of a new file and was none of the version before is the player's: it waits in
; ${STAGE}\own, and goes to a folder "Kept files" at the end.
;
; Nothing that lies in the folder is run. What the version before consisted of stands in its
; package-files.txt; versions before there was such a list had the files in former-files.txt.

Var list
Var action
Var problem
Var code
Var madeFolder
Var heldBack
Var whose

; Calls $action for each $item of the $list, until there is a $problem. A line that leads elsewhere, or
; to what the launcher saved, is skipped.
Function forEachItem
  Push $0
  Push $1
  Push $2
  Push $3
  ClearErrors
  FileOpen $0 "$list" r
  ${IfNot} ${Errors}
    ${Do}
      ClearErrors
      FileRead $0 $item
      ${If} ${Errors}
        ${ExitDo}
      ${EndIf}
      ${Do}
        StrCpy $1 $item 1 -1
        ${If} $1 == "$\r"
        ${OrIf} $1 == "$\n"
          StrCpy $item $item -1
        ${Else}
          ${ExitDo}
        ${EndIf}
      ${Loop}
      StrCpy $1 $item
      StrCpy $2 '/:*?<>|"'
      System::Call 'shlwapi::StrCSpnW(w r1, w r2) i.r3'
      StrCpy $2 ".."
      System::Call 'shlwapi::StrStrW(w r1, w r2) p.r2'
      StrLen $1 $item
      ${If} $1 > 0
      ${AndIf} $1 = $3
      ${AndIf} $2 P= 0
      ${AndIf} $item != "settings.txt"
      ${AndIf} $item != "offline.txt"
        StrCpy $1 $item 1
        ${If} $1 != "\"
          Call $action
        ${EndIf}
      ${EndIf}
    ${LoopUntil} $problem != ""
    FileClose $0
  ${ElseIf} ${FileExists} "$list"
    StrCpy $problem "$list cannot be read."
    StrCpy $code 5
  ${EndIf}
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

!macro forEachItem file function
  StrCpy $list "${file}"
  GetFunctionAddress $action ${function}
  Call forEachItem
!macroend

; Whether $item can be replaced now.
Function checkItem
  Push $0
  Call findLink
  ${If} $linkOnWay != ""
    StrCpy $problem "$linkOnWay is a link to another place. Remove it and try again."
    StrCpy $code 3
  ${ElseIf} ${FileExists} "$INSTDIR\$item\*.*"
    StrCpy $problem "$INSTDIR\$item is a folder. Remove it and try again."
    StrCpy $code 3
  ${Else}
    Push "$INSTDIR\$item"
    Call isInUse
    Pop $0
    ${If} $0 != ""
      StrCpy $problem "$INSTDIR\$item is in use: the ${NAME} is running, or another program has it open. Close it and try again."
      StrCpy $code 2
    ${EndIf}
  ${EndIf}
  Pop $0
FunctionEnd

Function checkItems
  !insertmacro forEachItem "$PLUGINSDIR\old-files.txt" checkItem
  ${If} $problem == ""
    !insertmacro forEachItem "$PLUGINSDIR\new-files.txt" checkItem
  ${EndIf}
  ${If} $problem == ""
    StrCpy $item "uninstall.exe"
    Call checkItem
  ${EndIf}
FunctionEnd

; Unlike the installer's own command this one sets the error flag, and opens no window.
!macro copy from to
  StrCpy $0 "${from}"
  StrCpy $1 "${to}"
  System::Call 'kernel32::CopyFileW(w r0, w r1, i 0) i.r0'
  ${If} $0 = 0
    SetErrors
  ${EndIf}
!macroend

!macro move from to
  Push "${from}"
  Push "${to}"
  Call move
!macroend

; Empties the place of $item, for $whose it is.
Function takeOut
  ${If} ${FileExists} "$INSTDIR\$item"
    !insertmacro move "$INSTDIR\$item" "${STAGE}\$whose\$item"
    ${If} ${Errors}
      StrCpy $problem "$INSTDIR\$item cannot be replaced: it is in use, or cannot be written."
      StrCpy $code 2
    ${EndIf}
  ${ElseIfNot} ${FileExists} "${STAGE}\old\$item"
    ClearErrors
    CreateDirectory "${STAGE}\none\$item"
    ; A file of the list before that is not there needs no note.
    ${If} ${Errors}
    ${AndIf} $whose == "own"
      StrCpy $problem "$INSTDIR cannot be written."
      StrCpy $code 5
    ${EndIf}
  ${EndIf}
FunctionEnd

Function putIn
  !insertmacro move "${STAGE}\new\$item" "$INSTDIR\$item"
  ${If} ${Errors}
    StrCpy $problem "$INSTDIR\$item cannot be written."
    StrCpy $code 5
  ${EndIf}
FunctionEnd

Function replaceItem
  ${If} $item != "${PROGRAM}"
    Call takeOut
    ${If} $problem == ""
      Call putIn
    ${EndIf}
  ${EndIf}
FunctionEnd

; What was put in goes back first, then what was taken out.
Function putBack
  ${IfNot} ${FileExists} "${STAGE}\new\$item"
  ${AndIf} ${FileExists} "$INSTDIR\$item"
    ${If} ${FileExists} "${STAGE}\old\$item"
    ${OrIf} ${FileExists} "${STAGE}\own\$item"
    ${OrIf} ${FileExists} "${STAGE}\none\$item\*.*"
      !insertmacro move "$INSTDIR\$item" "${STAGE}\new\$item"
      ${If} ${Errors}
        StrCpy $heldBack 1
      ${EndIf}
    ${EndIf}
  ${EndIf}
  ${If} ${FileExists} "${STAGE}\own\$item"
    !insertmacro move "${STAGE}\own\$item" "$INSTDIR\$item"
    ${If} ${Errors}
      StrCpy $heldBack 1
    ${EndIf}
  ${EndIf}
  Call putBackOld
FunctionEnd

; Nobody starts the program before all the rest is back.
Function putBackOld
  ${If} $item != "${PROGRAM}"
  ${AndIf} ${FileExists} "${STAGE}\old\$item"
    ; Fails when something is still in its place.
    !insertmacro move "${STAGE}\old\$item" "$INSTDIR\$item"
    ${If} ${Errors}
      StrCpy $heldBack 1
    ${EndIf}
  ${EndIf}
FunctionEnd

; A folder that has become empty. Only the folders of the packages come here.
Function pruneItem
  Push $0
  Call findLink
  ${GetParent} "$item" $0
  ${If} $linkOnWay != ""
    StrCpy $0 ""
  ${EndIf}
  ${DoWhile} $0 != ""
    RMDir "$INSTDIR\$0"
    RMDir "${STAGE}\own\$0"
    ${GetParent} "$0" $0
  ${Loop}
  RMDir "${STAGE}\own"
  Pop $0
FunctionEnd

; As if there had been no installer, whether it was this one or one that was broken off. With the program
; in its place there is nothing to take back: nothing was begun, or all was done, or somebody has unpacked
; a launcher over it. Sets $problem when a file of the version before cannot go back, or a new one not out of
; its place; all stays then for another try.
Function rollBack
  Push $0
  StrCpy $0 $problem
  StrCpy $heldBack ""
  StrCpy $problem ""
  SetOutPath "$TEMP"
  ${If} ${FileExists} "${STAGE}\old\*.*"
  ${AndIfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    !insertmacro forEachItem "${STAGE}\new-files.txt" putBack
    StrCpy $item "uninstall.exe"
    Call putBack
    !insertmacro forEachItem "${STAGE}\old-files.txt" putBackOld
    !insertmacro forEachItem "${STAGE}\new-files.txt" pruneItem
    ${If} $problem != ""
      StrCpy $heldBack 1
    ${EndIf}
    ${If} $heldBack == ""
    ${AndIf} ${FileExists} "${STAGE}\old\${PROGRAM}"
      !insertmacro move "${STAGE}\old\${PROGRAM}" "$INSTDIR\${PROGRAM}"
      ${If} ${Errors}
        StrCpy $heldBack 1
      ${EndIf}
    ${EndIf}
  ${EndIf}
  ${If} $heldBack != ""
    StrCpy $0 "Not all files of the version before could be put back, and the ${NAME} does not start until they are. Close the programs that use them and run this installer again."
    StrCpy $code 7
  ${Else}
    Call removeStage
  ${EndIf}
  ${If} $madeFolder != ""
    RMDir "$INSTDIR"
  ${EndIf}
  StrCpy $problem $0
  Pop $0
FunctionEnd

; PATH: to the disk with what Windows still keeps in memory, lest a power failure among the renames leaves
; names without contents. Where that cannot be asked for, the rest is as good as without.
Function flushFile
  Exch $0
  Push $1
  System::Call 'kernel32::CreateFileW(w r0, i 0x40000000, i 7, p 0, i 3, i 0, p 0) p.r1'
  ${If} $1 != -1
    System::Call 'kernel32::FlushFileBuffers(p r1)'
    System::Call 'kernel32::CloseHandle(p r1)'
  ${EndIf}
  Pop $1
  Pop $0
FunctionEnd

!macro flushFile file
  Push "${file}"
  Call flushFile
!macroend

Function checkUnpacked
  ${If} ${FileExists} "${STAGE}\new\$item"
    !insertmacro flushFile "${STAGE}\new\$item"
  ${Else}
    StrCpy $problem 1
  ${EndIf}
FunctionEnd

; The two lists where nothing of the folder is touched yet. Leaves a $problem when that of the version before
; is there and cannot be read: another list would leave files of that version.
Function readLists
  InitPluginsDir
  SetOverwrite on
  ; The time of a checkout must not get into the installer.
  SetDateSave off
  File "/oname=$PLUGINSDIR\new-files.txt" "${FILE_LIST}"
  File "/oname=$PLUGINSDIR\old-files.txt" "former-files.txt"
  SetDateSave on
  ; A folder of that name is told by the check of all places.
  ${If} ${FileExists} "$INSTDIR\package-files.txt"
  ${AndIfNot} ${FileExists} "$INSTDIR\package-files.txt\*.*"
    ClearErrors
    !insertmacro copy "$INSTDIR\package-files.txt" "$PLUGINSDIR\old-files.txt"
    ${If} ${Errors}
      StrCpy $problem "$INSTDIR\package-files.txt cannot be read: another program has it open, or it must not be read. Close that program and try again."
      StrCpy $code 2
    ${EndIf}
  ${ElseIfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    Delete "$PLUGINSDIR\old-files.txt"
  ${EndIf}
FunctionEnd

; Everything to ${STAGE}, beside what is in use. Leaves a $problem when not all of it is there.
Function unpackFiles
  SetOverwrite on
  ; No button that goes on without a file.
  AllowSkipFiles off
  ClearErrors
  CreateDirectory "${STAGE}"
  !insertmacro copy "$PLUGINSDIR\new-files.txt" "${STAGE}\new-files.txt"
  ${If} ${FileExists} "$PLUGINSDIR\old-files.txt"
    !insertmacro copy "$PLUGINSDIR\old-files.txt" "${STAGE}\old-files.txt"
  ${EndIf}
  CreateDirectory "${STAGE}\new"
  ${IfNot} ${Errors}
    !insertmacro installFiles
    WriteUninstaller "${STAGE}\new\uninstall.exe"
  ${EndIf}
  ${If} ${Errors}
    StrCpy $problem 1
  ${EndIf}
  SetOutPath "$TEMP"
  ${If} $problem == ""
    !insertmacro forEachItem "$PLUGINSDIR\new-files.txt" checkUnpacked
    !insertmacro flushFile "${STAGE}\new\uninstall.exe"
    !insertmacro flushFile "${STAGE}\new-files.txt"
    !insertmacro flushFile "${STAGE}\old-files.txt"
  ${EndIf}
  ${If} $problem != ""
    StrCpy $problem "The files could not be written to $INSTDIR: it is read-only, or there is not enough room."
    StrCpy $code 5
  ${EndIf}
FunctionEnd

Function replaceFiles
  ClearErrors
  CreateDirectory "${STAGE}\old"
  ${If} ${Errors}
    StrCpy $problem "$INSTDIR cannot be written."
    StrCpy $code 5
    Return
  ${EndIf}
  StrCpy $whose "old"
  StrCpy $item "${PROGRAM}"
  Call takeOut
  ${If} $problem == ""
    StrCpy $item "uninstall.exe"
    Call takeOut
  ${EndIf}
  ${If} $problem == ""
    !insertmacro forEachItem "${STAGE}\old-files.txt" takeOut
  ${EndIf}
  StrCpy $whose "own"
  ${If} $problem == ""
    !insertmacro forEachItem "${STAGE}\new-files.txt" replaceItem
  ${EndIf}
  ${If} $problem == ""
    StrCpy $item "uninstall.exe"
    Call replaceItem
  ${EndIf}
  ${If} $problem == ""
    StrCpy $item "${PROGRAM}"
    Call putIn
  ${EndIf}
FunctionEnd

; After it all is as it was or as it should be.
Function cleanUp
  !insertmacro forEachItem "${STAGE}\old-files.txt" pruneItem
  Call removeStage
FunctionEnd
