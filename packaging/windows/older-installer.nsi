; For test-update.sh: what the installer of the first packages did, as far as one that comes after it can
; notice. No checkout but a full one has that script itself. It wrote its files straight into the
; folder, with no list of them and nothing that keeps two apart; its uninstaller removed them, and told
; nobody of it. This one leaves a mark, C:\ran.txt, when it is run.
;
; INSTALL_FILES and UNINSTALL_FILES are the commands for the files.
Target amd64-unicode
Unicode true
RequestExecutionLevel user
SetCompress off
!define NAME "Emberwake Online Launcher"
!define OWN_KEY "Software\${NAME}"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
Name "${NAME}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\${NAME}"
InstallDirRegKey HKCU "${OWN_KEY}" "InstallFolder"
VIProductVersion "0.9.0.0"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "0.9.0"
VIAddVersionKey FileVersion "0.9.0"
VIAddVersionKey FileDescription "${NAME} Setup"
VIAddVersionKey LegalCopyright ""

Section
  !include "${INSTALL_FILES}"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\emberwake-launcher.exe"
  WriteRegStr HKCU "${OWN_KEY}" "InstallFolder" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "0.9.0"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
SectionEnd

Section un.
  FileOpen $0 "C:\ran.txt" w
  FileClose $0
  SetOutPath "$TEMP"
  !include "${UNINSTALL_FILES}"
SectionEnd
