; What installer and uninstaller ask before the bridge edits the simulators' EXE.xml files. The bridge stops at the first
; file that it can't write and leaves those before it edited; asking first makes it all or none.

!include WordFunc.nsh
!include StrFunc.nsh
${Using:StrFunc} StrStr
${Using:StrFunc} UnStrStr

Var ExeXmlFiles ; those of this PC, one a line

; Runs the bridge with that option. Its exit code, or "error" if Windows can't start it, is then in $0, and its output or
; the reason in $1.
!macro runBridge option
  nsExec::ExecToStack '"$INSTDIR\VantrelBridgeHID.exe" ${option}'
  Pop $0
  Pop $1
  ${If} $0 == "error"
    StrCpy $1 "VantrelBridgeHID.exe doesn't start. A virus scanner or Windows may block it. Allow it there, and register \
the bridge on the setup page."
  ${EndIf}
!macroend

!macro exeXmlFunctions un findText

; Reads the file $2. Sets $5 if its last tag is where the bridge can put an entry before it, that is, on a line of its own
; that isn't the first; and $6 if the file names the bridge.
Function ${un}readExeXml
  StrCpy $5 0
  StrCpy $6 0
  StrCpy $7 0
  FileOpen $8 $2 r
  ${Do}
    ClearErrors
    FileRead $8 $9
    ${IfThen} ${Errors} ${|} ${ExitDo} ${|}
    ${${findText}} $R0 $9 "VantrelBridgeHID"
    ${IfThen} $R0 != "" ${|} StrCpy $6 1 ${|}
    ${WordFind} "$9" "$\r" "+1" $9
    ${WordFind} "$9" "$\n" "+1" $9
    ${WordFind} "$9" "$\t" "+1" $9
    ${WordFind} "$9" " " "+1" $9
    ${If} $9 == "</SimBase.Document>"
    ${AndIf} $7 > 0
      StrCpy $5 1
    ${EndIf}
    IntOp $7 $7 + 1
  ${Loop}
  FileClose $8
  ${IfThen} $7 = 0 ${|} StrCpy $5 1 ${|} ; an empty file is filled like a new one
FunctionEnd

Function ${un}canWrite ; the file $2; sets $4
  ClearErrors
  FileOpen $8 $2 a
  StrCpy $4 1
  ${IfThen} ${Errors} ${|} StrCpy $4 0 ${|}
  FileClose $8
FunctionEnd

; Puts the reason on the stack why the bridge can't edit the files, or an empty text.
Function ${un}explainUneditableExeXml
  StrCpy $ExeXmlFiles ""
  StrCpy $R1 ""
  !insertmacro runBridge "--list-exe-xml"
  StrCpy $3 0
  ${Do}
    IntOp $3 $3 + 1
    ClearErrors
    ${WordFind} "$1" "$\r$\n" "E+$3" $2
    ${IfThen} ${Errors} ${|} ${ExitDo} ${|}
    StrCpy $0 $2 "" -7
    ${IfThen} $0 != "EXE.xml" ${|} ${Continue} ${|} ; that there is no simulator
    StrCpy $ExeXmlFiles "$ExeXmlFiles$2$\r$\n"
    ${IfThen} ${FileExists} $2 ${|} Call ${un}explainExeXml ${|}
  ${Loop}
  Push $R1
FunctionEnd
!macroend

Function explainExeXml
  Call canWrite
  Call readExeXml
  ${If} $4 = 0
    StrCpy $R1 "$2 can't be written. Close the simulator, remove the write protection, and register the bridge on the \
setup page."
  ${ElseIf} $5 = 0
    StrCpy $R1 "$2 is damaged: it does not end with </SimBase.Document> on a line of its own. Repair it, and register \
the bridge on the setup page."
  ${EndIf}
FunctionEnd

Function un.explainExeXml
  Call un.canWrite
  Call un.readExeXml
  ${If} $4 = 0
  ${AndIf} $6 = 1
    StrCpy $R1 "$2 can't be written. Close the simulator, remove the write protection, and uninstall again."
  ${EndIf}
FunctionEnd

!insertmacro exeXmlFunctions "" StrStr
!insertmacro exeXmlFunctions un. UnStrStr
