; Which folders the launcher must not have for itself; included by installer.nsi.

Var identity
Var game

; PATH: sets $reason when $INSTDIR is that folder, or one around it.
Function refuseAround
  Exch $0
  Push $1
  ${DoWhile} $0 != ""
    StrCpy $1 $0 1 -1
    ${If} $1 == "\"
      StrCpy $0 $0 -1
    ${EndIf}
    StrCpy $1 "none"
    ; A folder has several names: short ones, links, drives in place of folders.
    ${If} $identity != ""
      ; "C:" is whichever folder is the current one there.
      StrLen $1 $0
      ${If} $1 = 2
        Push "$0\"
      ${Else}
        Push $0
      ${EndIf}
      Call identityOf
      Pop $1
    ${EndIf}
    ${If} $0 == $INSTDIR
    ${OrIf} $1 == $identity
      StrCpy $reason "$INSTDIR belongs to Windows or to you. Choose a folder for the launcher alone."
    ${EndIf}
    ${GetParent} "$0" $0
  ${Loop}
  Pop $1
  Pop $0
FunctionEnd

!macro refuseAround folder
  Push "${folder}"
  Call refuseAround
!macroend

; IDENTIFIER: the same for one of the folders that Windows knows by that, wherever it was moved to.
Function refuseKnownFolder
  Exch $0
  Push $1
  ; 0x4000: also one that is not there.
  System::Call 'shell32::SHGetKnownFolderPath(g r0, i 0x4000, p 0, *p.r1) i.r0'
  ${If} $0 = 0
    System::Call 'kernel32::lstrcpynW(w.r0, p r1, i ${NSIS_MAX_STRLEN}) p'
    System::Call 'ole32::CoTaskMemFree(p r1)'
    !insertmacro refuseAround $0
  ${EndIf}
  Pop $1
  Pop $0
FunctionEnd

!macro refuseKnownFolder identifier
  Push "${identifier}"
  Call refuseKnownFolder
!macroend

!macro refuseFolderOf variable
  ReadEnvStr $1 ${variable}
  !insertmacro refuseAround $1
!macroend

; Leaves in $reason why the launcher must not have $INSTDIR, or nothing. The launcher manages the
; folder as its own: it removes archives and old versions in it, and makes folders named like servers.
Function checkFolder
  Push $0
  Push $1
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
  ${EndIf}
  StrLen $1 $INSTDIR
  StrCpy $0 $INSTDIR
  System::Call 'shlwapi::PathIsRootW(w r0) i.r0'
  ${If} $1 < 4
  ${OrIf} $0 <> 0
    StrCpy $reason "$INSTDIR is a whole drive. Choose a folder for the launcher alone."
  ${EndIf}
  ; Installer, start menu and most of Windows know paths of 260 letters at most.
  ${If} $1 > ${LONGEST_FOLDER}
    StrCpy $reason "The path of $INSTDIR has $1 letters; the launcher's files need one of at most ${LONGEST_FOLDER}. Choose a folder with a shorter path."
  ${EndIf}
  Push "$INSTDIR"
  Call identityOf
  Pop $identity
  !insertmacro refuseAround $PROGRAMFILES
  !insertmacro refuseAround $PROGRAMFILES32
  !insertmacro refuseAround $PROGRAMFILES64
  !insertmacro refuseAround $COMMONFILES
  !insertmacro refuseAround $SYSDIR
  !insertmacro refuseAround $PROFILE
  !insertmacro refuseAround $DESKTOP
  !insertmacro refuseAround $DOCUMENTS
  !insertmacro refuseAround $MUSIC
  !insertmacro refuseAround $PICTURES
  !insertmacro refuseAround $VIDEOS
  !insertmacro refuseAround $FAVORITES
  !insertmacro refuseAround $APPDATA
  !insertmacro refuseAround $LOCALAPPDATA
  !insertmacro refuseAround "$LOCALAPPDATA\Programs"
  !insertmacro refuseAround $SMSTARTUP
  !insertmacro refuseAround $TEMP
  !insertmacro refuseKnownFolder "{374DE290-123F-4565-9164-39C4925E467B}" ; Downloads
  !insertmacro refuseKnownFolder "{4C5C32FF-BB9D-43B0-B5B4-2D72E54EAAA4}" ; Saved Games
  !insertmacro refuseKnownFolder "{56784854-C6CB-462B-8169-88E350ACB882}" ; Contacts
  !insertmacro refuseKnownFolder "{BFB9D5E0-C6A9-404C-B2B2-AE6DB6AF4968}" ; Links
  !insertmacro refuseKnownFolder "{7D1D3A04-DEBB-4115-95CF-2F29DA2920DA}" ; Searches
  !insertmacro refuseKnownFolder "{31C0DD25-9439-4F12-BF41-7FF4EDA38722}" ; 3D Objects
  !insertmacro refuseKnownFolder "{B7BEDE81-DF94-4682-A7D8-57A52620B86F}" ; Screenshots
  !insertmacro refuseKnownFolder "{AB5FB87B-7CE2-4F83-915D-550846C9537B}" ; Camera Roll
  !insertmacro refuseKnownFolder "{A520A1A4-1780-4FF6-BD18-167343C5AF16}" ; AppData\LocalLow
  !insertmacro refuseKnownFolder "{62AB5D82-FDC1-4DC3-A9DD-070D1D495D97}" ; ProgramData
  !insertmacro refuseKnownFolder "{C4AA340D-F20F-4863-AFEF-F87EF2E6BA25}" ; those of all players
  !insertmacro refuseKnownFolder "{ED4824AF-DCE4-45A8-81E2-FC7965083634}"
  !insertmacro refuseKnownFolder "{3D644C9B-1FB8-4F30-9B45-F670235F79C0}"
  !insertmacro refuseKnownFolder "{3214FAB5-9757-4298-BB61-92A9DEAA44FF}"
  !insertmacro refuseKnownFolder "{B6EBFB86-6907-413C-9AF7-4FC2ABF07CC5}"
  !insertmacro refuseKnownFolder "{2400183A-6185-49FB-A2D8-4A392A602BA3}"
  !insertmacro refuseKnownFolder "{A52BBA46-E9E1-435F-B3D9-28DAA648C0F6}" ; OneDrive
  !insertmacro refuseFolderOf OneDrive
  !insertmacro refuseFolderOf OneDriveConsumer
  !insertmacro refuseFolderOf OneDriveCommercial
  ; A cloud may keep these without Windows knowing that it does.
  ReadEnvStr $1 OneDrive
  ${If} $1 != ""
    !insertmacro refuseAround "$1\Desktop"
    !insertmacro refuseAround "$1\Documents"
    !insertmacro refuseAround "$1\Pictures"
  ${EndIf}
  ; Windows itself, and everything in it.
  StrLen $1 "$WINDIR\"
  StrCpy $0 "$INSTDIR\" $1
  ${If} $0 == "$WINDIR\"
    StrCpy $reason "$INSTDIR belongs to Windows. Choose a folder for the launcher alone."
  ${EndIf}
  Pop $1
  Pop $0
FunctionEnd

; PROGRAM: the product that its version resource names, or "".
Function productOf
  Exch $0
  Push $1
  Push $2
  Push $3
  Push $4
  Push $5
  System::Call 'version::GetFileVersionInfoSizeW(w r0, *i) i.r1'
  System::Alloc $1
  Pop $2
  System::Call 'version::GetFileVersionInfoW(w r0, i 0, i r1, p r2) i.r3'
  StrCpy $0 ""
  ${If} $1 > 0
  ${AndIf} $3 <> 0
    System::Call 'version::VerQueryValueW(p r2, w "\VarFileInfo\Translation", *p.r3, *i.r4) i.r5'
    ${If} $5 <> 0
      System::Call '*$3(&i2.r4, &i2.r5)'
      IntFmt $4 "%04x" $4
      IntFmt $5 "%04x" $5
      StrCpy $4 "\StringFileInfo\$4$5\ProductName"
      System::Call 'version::VerQueryValueW(p r2, w r4, *p.r3, *i.r4) i.r5'
      ${If} $5 <> 0
        System::Call 'kernel32::lstrcpynW(w.r0, p r3, i ${NSIS_MAX_STRLEN}) p'
      ${EndIf}
    ${EndIf}
  ${EndIf}
  System::Free $2
  Pop $5
  Pop $4
  Pop $3
  Pop $2
  Pop $1
  Exch $0
FunctionEnd

Function noteGame
  Pop $game
FunctionEnd

; "1" when $INSTDIR shows that the launcher is or was there: by its program, or what a broken-off installer
; left, or a game with what the launcher saves beside games: they outlive a launcher that was removed by
; hand, and a Windows that was installed anew.
Function showsLauncher
  Push $0
  Call isStage
  Pop $0
  ${If} $0 == ""
    ${If} ${FileExists} "$INSTDIR\${PROGRAM}"
      StrCpy $0 1
    ${ElseIf} ${FileExists} "$INSTDIR\settings.txt"
    ${OrIf} ${FileExists} "$INSTDIR\offline.txt"
      StrCpy $game ""
      !insertmacro forEachVersion "" noteGame
      ${If} $game != ""
        StrCpy $0 1
      ${EndIf}
    ${EndIf}
  ${EndIf}
  Exch $0
FunctionEnd

; The same, or Windows knows the folder as the launcher's. What Windows knows may be long gone.
Function isLaunchers
  Push $0
  ReadRegStr $0 HKCU "${OWN_KEY}" "InstallFolder"
  ${If} $0 == $INSTDIR
    StrCpy $0 1
  ${Else}
    Call showsLauncher
    Pop $0
  ${EndIf}
  Exch $0
FunctionEnd

; "1" when the program in $INSTDIR is another product's: it has the same file name in all of them.
Function isOtherProduct
  Push $0
  Push "$INSTDIR\${PROGRAM}"
  Call productOf
  Pop $0
  ${If} $0 == "${NAME}"
    StrCpy $0 ""
  ${ElseIf} $0 != ""
    StrCpy $0 1
  ${EndIf}
  Exch $0
FunctionEnd

; Sets $reason when something in $INSTDIR is another program's, in the place of what the installer makes.
Function refuseOthers
  Push $0
  ; Whose it is decides whether it may be replaced; it is never run.
  ${If} $reason == ""
  ${AndIf} ${FileExists} "$INSTDIR\uninstall.exe"
    Push "$INSTDIR\uninstall.exe"
    Call productOf
    Pop $0
    ; A power failure may leave a file without content where the launcher is registered.
    ${If} $0 == ""
      ReadRegStr $0 HKCU "${OWN_KEY}" "InstallFolder"
      ${If} $0 == $INSTDIR
        StrCpy $0 "${NAME}"
      ${EndIf}
    ${EndIf}
    ${If} $0 != "${NAME}"
      StrCpy $reason "$INSTDIR holds the uninstaller of another program. Choose an empty or a new folder for the launcher."
    ${EndIf}
  ${EndIf}
  ${If} $reason == ""
    Call isStage
    Pop $0
    ${If} $0 == ""
    ${AndIf} ${FileExists} "${STAGE}"
      StrCpy $reason "${STAGE} was not made by an installer. Remove it and try again."
    ${EndIf}
  ${EndIf}
  Pop $0
FunctionEnd

; To what a player browses to, the page with the folder appends the launcher's name. Where that is the
; launcher's folder itself, unpacked from the archive or of an earlier installation, the new one belongs
; into it and not into a folder in it. So, on the page and silently: $INSTDIR becomes the folder around
; it when its own name is ${NAME}, nothing of the launcher lies there, something of it and of no other
; product lies in the one around, and that is one where it would be installed: a player who has not chosen
; that folder is not told what is wrong with it.
Function leaveInnerFolder
  Push $0
  Push $1
  Push $2
  StrCpy $1 $INSTDIR
  StrCpy $2 $reason
  ${GetFileName} "$INSTDIR" $0
  ${If} $0 == "${NAME}"
    Call showsLauncher
    Pop $0
    ${If} $0 == ""
      ${GetParent} "$1" $INSTDIR
      StrLen $0 $INSTDIR
      StrCpy $reason "none"
      ; "C:" is whichever folder is the current one there.
      ${If} $0 > 3
        Call showsLauncher
        Pop $0
        ${If} $0 != ""
          Call isOtherProduct
          Pop $0
          ${If} $0 == ""
            Call checkFolder
            Call refuseOthers
          ${EndIf}
        ${EndIf}
      ${EndIf}
      ${If} $reason != ""
        StrCpy $INSTDIR $1
        StrCpy $reason $2
      ${EndIf}
    ${EndIf}
  ${EndIf}
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

; Besides: a folder with somebody else's files in it is not the launcher's. One where the launcher is
; or was may be full of games.
Function checkOwnFolder
  Push $0
  Call checkFolder
  Call leaveInnerFolder
  Call isLaunchers
  Pop $0
  ${If} $reason == ""
  ${AndIf} $0 == ""
    ${DirState} "$INSTDIR" $0
    ${If} $0 == 1
      StrCpy $reason "$INSTDIR holds other files. Choose an empty or a new folder for the launcher."
    ${EndIf}
  ${EndIf}
  Call refuseOthers
  Pop $0
FunctionEnd
