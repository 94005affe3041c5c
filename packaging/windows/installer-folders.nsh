; Which folders the launcher must not have for itself; included by installer.nsi.

; Two folders are the same if only case and a closing backslash differ.
!macro refuseFolder folder
  ${If} $INSTDIR == "${folder}"
    StrCpy $reason "$INSTDIR belongs to Windows or to you. Choose a folder for the launcher alone."
  ${EndIf}
!macroend

; Leaves in $reason why the launcher must not have $INSTDIR, or nothing. The launcher manages the
; folder as its own: it removes old versions in it, and the uninstaller may remove all of it.
Function checkFolder
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

; Besides: a folder with somebody else's files in it is not the launcher's. One where the launcher is
; or was may be full of games, and a broken-off installation is one as well.
Function checkOwnFolder
  Push $0
  Call checkFolder
  Call isStage
  Pop $0
  ${If} $reason == ""
  ${AndIf} $0 == ""
  ${AndIfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
    ReadRegStr $0 HKCU "${OWN_KEY}" "InstallFolder"
    ${If} $0 != $INSTDIR
      ${DirState} "$INSTDIR" $0
      ${If} $0 == 1
        StrCpy $reason "$INSTDIR holds other files. Choose an empty or a new folder for the launcher."
      ${EndIf}
    ${EndIf}
  ${EndIf}
  ; Whose it is decides whether it may be replaced; it is never run.
  ${If} $reason == ""
  ${AndIf} ${FileExists} "$INSTDIR\uninstall.exe"
    Push "$INSTDIR\uninstall.exe"
    Call productOf
    Pop $0
    ${If} $0 != "${NAME}"
      StrCpy $reason "$INSTDIR holds the uninstaller of another program. Choose an empty or a new folder for the launcher."
    ${EndIf}
  ${EndIf}
  Pop $0
FunctionEnd
