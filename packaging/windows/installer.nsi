; The installer of the Windows package, for one user and without administrator rights. build-packages.sh calls makensis
; with VERSION, VERSION_NUMBERS (four numbers), STAGE (the installed tree), KIBIBYTES (its size), FILE_LIST (its files,
; see below), PICTURE (beside the text of the first and last page), OUTPUT and, when it signs, SIGN (a script that takes
; the file's name).
;
; Switches beside NSIS's own /S and /D=FOLDER:
;   /REGISTER, /NOREGISTER   whether the simulator starts the bridge; by default only a first installation registers it
; and of the uninstaller:
;   /REMOVEDATA              removes configuration and logs too
; Exit codes: 0 good, 1 cancelled, 2 nothing was changed, 3 installed, but not registered.

Target amd64-unicode
SetCompressor zlib
; The packed times of files would make each build's bytes differ.
SetDateSave off
AllowSkipFiles off
RequestExecutionLevel user
ManifestDPIAware true
ManifestLongPathAware true
ManifestSupportedOS Win10

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include WinVer.nsh

!define PRODUCT VantrelBridge
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${PRODUCT}"
!define OLDEST_WINDOWS_BUILD 17763

Name "${PRODUCT}"
BrandingText "${PRODUCT} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\${PRODUCT}"
ShowInstDetails show
ShowUninstDetails show

VIProductVersion ${VERSION_NUMBERS}
VIFileVersion ${VERSION_NUMBERS}
VIAddVersionKey ProductName "VantrelBridgeHID"
VIAddVersionKey CompanyName "VantrelBridgeHID"
VIAddVersionKey FileDescription "Installs VantrelBridgeHID"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey LegalCopyright "All rights reserved"

!ifdef SIGN
  !uninstfinalize '"${SIGN}" "%1"' = 0
!endif

Var Unpacked    ; the folder in which all files arrive first, so that a full disk leaves the old version whole
Var IsUpgrade
Var Register    ; 1: the simulator shall start the bridge
Var Outcome     ; what the last page says about it
Var RemoveData  ; 1: the uninstaller removes configuration and logs too
Var Checkbox

!include exe-xml.nsh
!include programs.nsh

!define MUI_ICON "VantrelBridgeHID.ico"
!define MUI_UNICON "VantrelBridgeHID.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${PICTURE}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_NOAUTOCLOSE
!define MUI_UNFINISHPAGE_NOAUTOCLOSE

!define MUI_WELCOMEPAGE_TITLE "VantrelBridgeHID ${VERSION}"
!define MUI_WELCOMEPAGE_TEXT "The bridge connects the USB boards of your home cockpit to Microsoft Flight Simulator \
2020 and 2024.$\r$\n$\r$\nIt needs no administrator rights and changes nothing outside your own folders. If an older \
version is installed, your configuration stays as it is.$\r$\n$\r$\nClose the simulator before you go on."
!insertmacro MUI_PAGE_WELCOME
!define MUI_PAGE_CUSTOMFUNCTION_PRE skipOnUpgrade
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE refuseForeignFiles
!insertmacro MUI_PAGE_DIRECTORY
Page custom showSimulatorPage leaveSimulatorPage
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "VantrelBridgeHID is installed"
!define MUI_FINISHPAGE_TEXT "$Outcome"
!define MUI_FINISHPAGE_TEXT_LARGE
!define MUI_FINISHPAGE_RUN "$INSTDIR\vantrel.exe"
!define MUI_FINISHPAGE_RUN_PARAMETERS "setup"
!define MUI_FINISHPAGE_RUN_TEXT "&Open the setup page"
!insertmacro MUI_PAGE_FINISH

UninstPage custom un.showDataPage un.leaveDataPage
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; --- Start

Function .onInit
  StrCpy $IsUpgrade 0
  Call requireWindows
  Call requireOneInstaller
  ReadRegStr $0 HKCU "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 != ""
  ${AndIf} ${FileExists} "$0\uninstall.exe"
    StrCpy $INSTDIR $0
    StrCpy $IsUpgrade 1
  ${EndIf}
  Call readSwitches
FunctionEnd

Function requireWindows
  ${Unless} ${AtLeastBuild} ${OLDEST_WINDOWS_BUILD}
    MessageBox MB_ICONSTOP "VantrelBridgeHID needs Windows 10, version 1809 or later. \
Update Windows, then run this program again." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndUnless}
FunctionEnd

Function requireOneInstaller
  System::Call 'kernel32::CreateMutex(p 0, i 0, t "Local\${PRODUCT}.setup") ?e'
  Pop $0
  ${If} $0 == 183 ; ERROR_ALREADY_EXISTS
    MessageBox MB_ICONSTOP "Another installation of VantrelBridgeHID is running. Finish it first." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
FunctionEnd

Function readSwitches
  ; An entry that is there may have been changed by its user, so an upgrade leaves it alone.
  IntOp $Register 1 - $IsUpgrade
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/REGISTER" $1
  ${IfNot} ${Errors}
    StrCpy $Register 1
  ${EndIf}
  ClearErrors
  ${GetOptions} $0 "/NOREGISTER" $1
  ${IfNot} ${Errors}
    StrCpy $Register 0
  ${EndIf}
FunctionEnd

; --- Pages

Function skipOnUpgrade
  ${If} $IsUpgrade = 1
    Abort
  ${EndIf}
FunctionEnd

Function showSimulatorPage
  Call skipOnUpgrade
  !insertmacro MUI_HEADER_TEXT "Start with the simulator" "Should the simulator start the bridge?"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateCheckbox} 0 0 100% 12u "&Start the bridge whenever the simulator starts (recommended)"
  Pop $Checkbox
  ${NSD_SetState} $Checkbox $Register
  ${NSD_CreateLabel} 0 20u 100% 60u "The installer adds the bridge to EXE.xml, the list of programs that a simulator \
starts, for each simulator on this PC. Entries of other programs stay as they are, and a copy of each file is kept \
beside it as EXE.xml.bak. The next page shows which files changed. Uninstalling removes the entry.$\r$\n$\r$\nYou can change \
this later on the setup page."
  Pop $0
  nsDialogs::Show
FunctionEnd

Function leaveSimulatorPage
  ${NSD_GetState} $Checkbox $Register
FunctionEnd

Function un.showDataPage
  !insertmacro MUI_HEADER_TEXT "Remove VantrelBridgeHID" "The simulator will no longer start the bridge."
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 30u "The bridge will be removed from:$\r$\n$INSTDIR"
  Pop $0
  ${NSD_CreateCheckbox} 0 40u 100% 12u "&Remove my configuration and the logs, too"
  Pop $Checkbox
  ${NSD_SetState} $Checkbox $RemoveData
  nsDialogs::Show
FunctionEnd

Function un.leaveDataPage
  ${NSD_GetState} $Checkbox $RemoveData
FunctionEnd

; --- Install

; FILE_LIST has a line `enterFolder FOLDER` for each folder, before its lines `packedFile FOLDER NAME`, and at the end
; `leaveFolder FOLDER`, the innermost first. FOLDER is empty, or begins with a backslash. Each use of the list defines
; what these do.
!macro forgetListMacros
  !macroundef enterFolder
  !macroundef packedFile
  !macroundef leaveFolder
!macroend

!macro enterFolder folder
!macroend
!macro packedFile folder name
  ${IfThen} ${FileExists} "$INSTDIR${folder}\${name}" ${|} StrCpy $0 "$INSTDIR${folder}\${name}" ${|}
!macroend
!macro leaveFolder folder
!macroend
Function refuseForeignFiles
  ${If} $IsUpgrade = 1
  ${OrIf} ${FileExists} "$INSTDIR\VantrelBridgeHID.exe"
    Return
  ${EndIf}
  StrCpy $0 ""
  !include "${FILE_LIST}"
  !insertmacro packedFile "" "uninstall.exe"
  ${If} $0 != ""
    MessageBox MB_ICONEXCLAMATION "$0 belongs to something else, and the installation would replace it. Choose another \
folder." /SD IDOK
    Abort
  ${EndIf}
FunctionEnd
!insertmacro forgetListMacros

!macro enterFolder folder
  SetOutPath "$Unpacked${folder}"
!macroend
!macro packedFile folder name
  File "${STAGE}${folder}/${name}"
!macroend
!macro leaveFolder folder
!macroend
Function unpackFiles
  StrCpy $Unpacked "$INSTDIR\unpacked.tmp"
  RMDir /r $Unpacked
  !include "${FILE_LIST}"
  WriteUninstaller "$Unpacked\uninstall.exe"
  SetOutPath $INSTDIR
FunctionEnd
!insertmacro forgetListMacros

!macro enterFolder folder
!macroend
!macro packedFile folder name
  StrCpy $0 "${folder}\${name}" "" 1
  Call refuseFileInUse
!macroend
!macro leaveFolder folder
!macroend
Function refuseFilesInUse
  !include "${FILE_LIST}"
FunctionEnd
!insertmacro forgetListMacros

Function refuseFileInUse ; the file $0
  Call isInUse
  ${If} $1 = 1
    Abort "$INSTDIR\$0 is write-protected, or a program uses it. Nothing was changed. Close the program, then run this one \
again."
  ${EndIf}
FunctionEnd

!macro enterFolder folder
  CreateDirectory "$INSTDIR${folder}"
!macroend
!macro packedFile folder name
  Delete "$INSTDIR${folder}\${name}"
  Rename "$Unpacked${folder}\${name}" "$INSTDIR${folder}\${name}"
!macroend
!macro leaveFolder folder
!macroend
Function moveFiles
  ClearErrors
  !include "${FILE_LIST}"
  Delete "$INSTDIR\uninstall.exe"
  Rename "$Unpacked\uninstall.exe" "$INSTDIR\uninstall.exe"
  ${If} ${Errors}
    Abort "A file in $INSTDIR can't be replaced. Close the programs that use it, then run this program again."
  ${EndIf}
  RMDir /r $Unpacked
FunctionEnd
!insertmacro forgetListMacros

; The old version's uninstaller knows best which files it brought.
Function removeOldFiles
  ${If} $IsUpgrade = 1
    ExecWait '"$INSTDIR\uninstall.exe" /S /FILESONLY _?=$INSTDIR'
  ${EndIf}
FunctionEnd

Function addSample ; its name on the stack
  Exch $0
  ${Unless} ${FileExists} "$INSTDIR\config\$0"
    CopyFiles /SILENT "$INSTDIR\sample\$0" "$INSTDIR\config\$0"
  ${EndUnless}
  Pop $0
FunctionEnd

; The bridge prefers the file beside itself. Putting one there would hide the one that its user has in the data folder.
; An event map beside a configuration that does without one would take effect, so a set is only added as a whole.
Function addConfiguration
  SetShellVarContext all
  StrCpy $0 "$APPDATA\${PRODUCT}"
  SetShellVarContext current
  ${If} ${FileExists} "$INSTDIR\config\config.json"
  ${OrIf} ${FileExists} "$0\config.json"
    Return
  ${EndIf}
  CreateDirectory "$INSTDIR\config"
  Push "hid_event_map.json"
  Call addSample
  Push "buttons.json"
  Call addSample
  Push "config.json"
  Call addSample
FunctionEnd

Function addShortcuts
  SetShellVarContext all
  StrCpy $0 "$APPDATA\${PRODUCT}\logs"
  SetShellVarContext current
  CreateDirectory $0
  SetOutPath $INSTDIR
  CreateDirectory "$SMPROGRAMS\${PRODUCT}"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\VantrelBridge setup.lnk" "$INSTDIR\vantrel.exe" "setup" \
    "$INSTDIR\VantrelBridgeHID.exe"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\Try it without hardware.lnk" "$INSTDIR\vantrel.exe" "demo" \
    "$INSTDIR\VantrelBridgeHID.exe"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\Log.lnk" $0
FunctionEnd

Function listInSettings
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "VantrelBridgeHID"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "VantrelBridgeHID"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\VantrelBridgeHID.exe,0"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" ${KIBIBYTES}
FunctionEnd

Function listChangedFiles
  StrCpy $0 0
  ${Do}
    IntOp $0 $0 + 1
    ClearErrors
    ${WordFind} $ExeXmlFiles "$\r$\n" "E+$0" $1
    ${IfThen} ${Errors} ${|} ${ExitDo} ${|}
    DetailPrint "Changed: $1"
  ${Loop}
FunctionEnd

Function registerBridge
  Call explainUneditableExeXml
  Pop $0
  ${If} $0 != ""
    StrCpy $Outcome "The simulator does not start the bridge yet: $0"
    SetErrorLevel 3
  ${Else}
    !insertmacro runBridge "--register"
    StrCpy $Outcome "The simulator starts the bridge from now on. The list on the page before names the files that changed."
    ${If} $0 != 0
      StrCpy $Outcome "The simulator does not start the bridge yet: $1"
      SetErrorLevel 3
    ${ElseIf} $ExeXmlFiles == ""
      StrCpy $Outcome "No simulator was found. Start it once, then register the bridge on the setup page."
    ${Else}
      Call listChangedFiles
    ${EndIf}
  ${EndIf}
  DetailPrint $Outcome
FunctionEnd

Section
  AddSize ${KIBIBYTES}
  Call refuseForeignFiles
  Call unpackFiles
  Call endPrograms
  Call refuseFilesInUse
  Call removeOldFiles
  Call moveFiles
  Call addConfiguration
  Call addShortcuts
  Call listInSettings
  StrCpy $Outcome "The bridge's entry in EXE.xml is as it was before."
  ${If} $Register = 1
    Call registerBridge
  ${EndIf}
SectionEnd

Function .onInstFailed
  SetOutPath $TEMP ; the current folder can't be removed
  RMDir /r "$INSTDIR\unpacked.tmp"
  RMDir $INSTDIR
FunctionEnd

; --- Uninstall

Function un.onInit
  StrCpy $RemoveData 0
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/REMOVEDATA" $1
  ${IfNot} ${Errors}
    StrCpy $RemoveData 1
  ${EndIf}
FunctionEnd

; Without the program nobody could ever uninstall what a virus scanner has left.
Function un.allowEntryToStay
  MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "VantrelBridgeHID.exe doesn't start; a virus scanner may have removed it. So its \
entry stays in EXE.xml, the simulator's list of programs, until you delete it there or install the bridge again.\
$\r$\n$\r$\nRemove everything else?" /SD IDOK IDOK goOn
  SetErrorLevel 1
  Abort "Cancelled. Nothing was removed."
  goOn:
FunctionEnd

Function un.unregisterBridge
  Call un.explainUneditableExeXml
  Pop $1
  ${If} $1 == ""
    !insertmacro runBridge "--unregister"
    ${IfThen} $0 == 0 ${|} Return ${|}
    ${If} $0 == "error"
      Call un.allowEntryToStay
      Return
    ${EndIf}
  ${EndIf}
  MessageBox MB_ICONSTOP "The bridge can't be removed from the simulator's list of programs, so nothing was removed: $1" \
    /SD IDOK
  SetErrorLevel 2
  Quit
FunctionEnd

!macro enterFolder folder
!macroend
!macro packedFile folder name
  Delete "$INSTDIR${folder}\${name}"
!macroend
!macro leaveFolder folder
  RMDir "$INSTDIR${folder}"
!macroend
Function un.removeFiles
  SetOutPath $TEMP
  !include "${FILE_LIST}"
FunctionEnd
!insertmacro forgetListMacros

Function un.removeData
  SetShellVarContext all
  ${If} $RemoveData = 1
    RMDir /r "$INSTDIR\config"
    Delete "$INSTDIR\VantrelBridgeHID*.log"
    RMDir /r "$APPDATA\${PRODUCT}"
  ${EndIf}
  RMDir "$APPDATA\${PRODUCT}\logs"
  RMDir "$APPDATA\${PRODUCT}"
  SetShellVarContext current
FunctionEnd

Section un.
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/FILESONLY" $1
  ${IfNot} ${Errors}
    Call un.removeFiles
    Return
  ${EndIf}
  Call un.endPrograms
  Call un.unregisterBridge
  Call un.removeFiles
  Call un.removeData
  RMDir /r "$SMPROGRAMS\${PRODUCT}"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir $INSTDIR
SectionEnd
