; Ends those of our programs that run from $INSTDIR, since Windows lets nobody replace or remove a running program, nor
; any other file that a program keeps open.

!macro endProgramsFunctions un

Function ${un}isInUse ; the file $0; sets $1
  StrCpy $1 0
  ${If} ${FileExists} "$INSTDIR\$0"
    ClearErrors
    FileOpen $2 "$INSTDIR\$0" a
    ${If} ${Errors}
      StrCpy $1 1
    ${EndIf}
    FileClose $2
  ${EndIf}
FunctionEnd

; The bridge has no window that a message could close: its hidden one only hears of boards. Ending the process loses
; nothing, and the boards' lights go out.
Function ${un}endProgram ; the program $0
  ; A busy machine needs seconds to end a program.
  StrCpy $3 0
  ${Do}
    Call ${un}isInUse
    ${IfThen} $1 = 0 ${|} Return ${|}
    ${If} $3 = 0
      MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "$0 is running. End it and go on?$\r$\n$\r$\nIf the setup page is open, \
save your changes first. The bridge starts again with the simulator." /SD IDOK IDOK end
      SetErrorLevel 1
      Abort "Cancelled. Nothing was changed."
      end:
      nsExec::Exec 'taskkill /F /IM "$0"'
      Pop $2
    ${EndIf}
    IntOp $3 $3 + 1
    Sleep 100
  ${LoopUntil} $3 = 300
  SetErrorLevel 2
  Abort "$INSTDIR\$0 is in use by another user or protected. Nothing was changed."
FunctionEnd

Function ${un}endPrograms
  StrCpy $0 "vantrel.exe" ; the setup page may start the bridge
  Call ${un}endProgram
  StrCpy $0 "VantrelBridgeHID.exe"
  Call ${un}endProgram
FunctionEnd
!macroend

!insertmacro endProgramsFunctions ""
!insertmacro endProgramsFunctions un.
