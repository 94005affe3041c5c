; What the uninstaller removes; included by installer.nsi.

Var registered
Var left

; "1" in $registered: this folder's launcher is the one that Windows knows.
Function un.findRegistered
  Push $0
  StrCpy $registered ""
  StrCpy $left ""
  ReadRegStr $0 HKCU "${OWN_KEY}" "InstallFolder"
  ${If} $0 == $INSTDIR
    StrCpy $registered 1
  ${EndIf}
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
      StrCpy $reason "The ${NAME} is running: $INSTDIR\$item is in use. Close it and try again."
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
