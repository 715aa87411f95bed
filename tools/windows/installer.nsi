; The installer: for the user who runs it, without an administrator's rights. /S runs it silently, /D=FOLDER says where to.
Target amd64-unicode  ; as the programs are
SetCompressor /SOLID lzma
!include "MUI2.nsh"

Name "Scorvane ${VERSION}"
OutFile "${OUTPUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Scorvane"
InstallDirRegKey HKCU "Software\Scorvane" "Folder"
ManifestDPIAware true

!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Scorvane"
!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN "$INSTDIR\scorvane.exe"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Scorvane"
VIAddVersionKey "FileDescription" "Scorvane's installer"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "MIT License"

; Tells the desktop that what opens a kind of file has changed.
!macro TellShell
  System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
!macroend

Section
  SetShellVarContext current
  SetOutPath "$INSTDIR"
  File /r "${FOLDER}/*"
  CreateShortcut "$SMPROGRAMS\Scorvane.lnk" "$INSTDIR\scorvane.exe"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  WriteRegStr HKCU "Software\Scorvane" "Folder" "$INSTDIR"
  WriteRegStr HKCU "${KEY}" "DisplayName" "Scorvane"
  WriteRegStr HKCU "${KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${KEY}" "DisplayIcon" "$INSTDIR\scorvane.exe"
  WriteRegStr HKCU "${KEY}" "Publisher" "The Scorvane developers"
  WriteRegStr HKCU "${KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${KEY}" "NoRepair" 1

  WriteRegStr HKCU "Software\Classes\.lgx" "" "Scorvane.League"
  WriteRegStr HKCU "Software\Classes\.lgx\OpenWithProgids" "Scorvane.League" ""
  WriteRegStr HKCU "Software\Classes\Scorvane.League" "" "Scorvane league"
  WriteRegStr HKCU "Software\Classes\Scorvane.League\DefaultIcon" "" "$INSTDIR\scorvane.exe,0"
  WriteRegStr HKCU "Software\Classes\Scorvane.League\shell\open\command" "" '"$INSTDIR\scorvane.exe" "%1"'
  WriteRegStr HKCU "Software\Classes\Applications\scorvane.exe\shell\open\command" "" '"$INSTDIR\scorvane.exe" "%1"'
  WriteRegStr HKCU "Software\Classes\Applications\scorvane.exe\SupportedTypes" ".lgx" ""
  !insertmacro TellShell
SectionEnd

; What was installed goes, by its names, which the package lists; leagues, and whatever else lies in the folder or in the user's data, stay.
Section "Uninstall"
  SetShellVarContext current
  !include "${GONE}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Scorvane.lnk"

  ReadRegStr $0 HKCU "Software\Classes\.lgx" ""
  StrCmp $0 "Scorvane.League" 0 +2
  DeleteRegValue HKCU "Software\Classes\.lgx" ""
  DeleteRegValue HKCU "Software\Classes\.lgx\OpenWithProgids" "Scorvane.League"
  DeleteRegKey /ifempty HKCU "Software\Classes\.lgx\OpenWithProgids"
  DeleteRegKey /ifempty HKCU "Software\Classes\.lgx"
  DeleteRegKey HKCU "Software\Classes\Scorvane.League"
  DeleteRegKey HKCU "Software\Classes\Applications\scorvane.exe"
  DeleteRegKey HKCU "${KEY}"
  DeleteRegKey HKCU "Software\Scorvane"
  !insertmacro TellShell
SectionEnd
