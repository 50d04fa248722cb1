; Installs the plug-in into OrVane's folder and registers it. scripts/package.sh calls makensis and gives
;   VERSION     as in CMakeLists.txt, for example 0.1.6
;   STAGE       the folder that holds the files to install
;   OUT         the installer to write
;   SIZE_KB     what the installed files take
;   CLASS_ID, SETTINGS_KEY, MODULE    as common/names/names.h has them
;   SIGN        a command that signs the file named after it; only when there is a certificate
;
; Exit codes: 0 done, 1 cancelled, 2 failed with nothing changed, 3010 done and a restart is due.
; /S asks nothing, /downgrade allows an older version over a newer one, /D=FOLDER (last, without
; quotes) overrides the folder.
;
; A file that is replaced or removed is first renamed aside, in its own folder, to a name that no other
; run takes: that works while the player has it loaded, and is what a failed run puts back. Only such a
; renamed file is ever scheduled for deletion at the restart. Scheduling the real name would delete
; whatever a later install puts there.

Unicode true
!include MUI2.nsh
!include LogicLib.nsh
!include WinVer.nsh
!include FileFunc.nsh
!include WordFunc.nsh

!define PRODUCT "OrVane Windows Media Player Plugin"
!define MAKER "OrVaneMedia"
!define UNINSTALLER "OrVaneWmpPlugin-uninstall.exe"
!define LICENCE "OrVaneWmpPlugin-LICENSE.txt"
!define NOTICES "OrVaneWmpPlugin-NOTICES.txt"
!define CLASS_KEY "CLSID\${CLASS_ID}"
!define PLAYER_KEY "Software\Microsoft\MediaPlayer\UIPlugins\${CLASS_ID}"
!define ENTRY_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\OrVaneWmpPlugin"

Name "${PRODUCT}"
OutFile "${OUT}"
SetCompressor /SOLID lzma
SetDateSave off
CRCCheck force
RequestExecutionLevel admin
ManifestSupportedOS all
ManifestDPIAware true
BrandingText "${PRODUCT} ${VERSION}"
ShowInstDetails nevershow
ShowUninstDetails nevershow
!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"' = 0
!endif

Var Unique      ; the tail of this run's set-aside names
Var Changing    ; 1 between the first change and the last
Var Placed      ; how many of the files are in place
Var Registering ; 1 once the registration may have changed
Var MadeFolder  ; 1 when this or an earlier install made the folder
Var NewFolder   ; 1 when this run made it
Var OldFolder   ; of the entry that was there; empty when there was none
Var OldVersion
Var OldSize
Var OldMade
Var OldModule   ; the registered module before
Var Problem     ; what Fail says
Var Note        ; on the first page: OrVane is missing
Var Ending      ; on the last page

!define MUI_ICON "plugin.ico"
!define MUI_UNICON "plugin.ico"
!define MUI_ABORTWARNING
!define MUI_WELCOMEPAGE_TEXT "$(WELCOME)$\r$\n$\r$\n$INSTDIR$\r$\n$\r$\n$Note"
!define MUI_FINISHPAGE_TEXT "$(FINISHED)$\r$\n$\r$\n$Ending"
!define MUI_FINISHPAGE_NOREBOOTSUPPORT
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Spanish"
!insertmacro MUI_LANGUAGE "French"
!include texts.nsh

!macro VersionTexts language description
  VIAddVersionKey /LANG=${language} "ProductName" "OrVane"
  VIAddVersionKey /LANG=${language} "CompanyName" "${MAKER}"
  VIAddVersionKey /LANG=${language} "FileDescription" "${description}"
  VIAddVersionKey /LANG=${language} "FileVersion" "${VERSION}.0"
  VIAddVersionKey /LANG=${language} "ProductVersion" "${VERSION}.0"
  VIAddVersionKey /LANG=${language} "LegalCopyright" "GPL-3.0-or-later"
!macroend
VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
!insertmacro VersionTexts ${LANG_ENGLISH} "OrVane Windows Media Player Plugin, installer"
!insertmacro VersionTexts ${LANG_SPANISH} "Complemento de OrVane para Windows Media Player, instalador"
!insertmacro VersionTexts ${LANG_FRENCH} "Plug-in OrVane pour Windows Media Player, installation"

; Before any change: says why not, and ends.
!macro Refuse text
  MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
  SetErrorLevel 2
  Quit
!macroend

; During the changes: takes them all back, says why, and ends.
!macro Fail text
  StrCpy $Problem "${text}"
  Call Fail
!macroend

; What both programs look at before they begin.
!macro CommonStart
  SetRegView 32
  SetShellVarContext all
  ${IfNot} ${AtLeastWin7}
    !insertmacro Refuse "$(NEEDS_WINDOWS_7)"
  ${EndIf}
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    !insertmacro Refuse "$(NEEDS_RIGHTS)"
  ${EndIf}
  System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\OrVaneWmpPluginSetup") p .r1 ?e'
  Pop $0
  ${If} $0 = 183
    !insertmacro Refuse "$(ALREADY_RUNS)"
  ${EndIf}
  System::Call 'ole32::CoCreateGuid(g .r0)'
  StrCpy $Unique $0 8 1
!macroend

; A file of ours goes: renamed aside, deleted now, or at the restart when the player has it loaded.
!macro RemoveFile folder name
  ${If} ${FileExists} "${folder}\${name}"
    Rename "${folder}\${name}" "${folder}\${name}.$Unique.old"
    Delete /REBOOTOK "${folder}\${name}.$Unique.old"
  ${EndIf}
!macroend

; What earlier runs renamed aside and could not delete; the restart may not have come yet.
!macro RemoveLeftovers folder
  Delete "${folder}\OrVaneWmpPlugin*.????????.old"
!macroend

; ------------------------------------------------------------------ install

Function .onInit
  !insertmacro CommonStart
  Call ChooseFolder
  ReadRegStr $OldFolder HKLM "${ENTRY_KEY}" "InstallLocation"
  ReadRegStr $OldVersion HKLM "${ENTRY_KEY}" "DisplayVersion"
  ReadRegDWORD $OldSize HKLM "${ENTRY_KEY}" "EstimatedSize"
  ReadRegDWORD $OldMade HKLM "${ENTRY_KEY}" "FolderMade"
  ReadRegStr $OldModule HKCR "${CLASS_KEY}\InprocServer32" ""
  ${VersionCompare} "$OldVersion" "${VERSION}" $0
  ${If} $OldVersion != ""
  ${AndIf} $0 = 1
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/downgrade" $2
    ${If} ${Errors}
      ${If} ${Silent}
        !insertmacro Refuse "$(IS_OLDER)"
      ${EndIf}
      MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "$(IS_OLDER)$\r$\n$\r$\n$(IS_OLDER_ASK)" IDYES goOn
      SetErrorLevel 1
      Quit
      goOn:
    ${EndIf}
  ${EndIf}
FunctionEnd

; OrVane's own folder, as its settings name it; where there is none, one of that name. /D= wins.
Function ChooseFolder
  ${If} $INSTDIR != ""
    Return
  ${EndIf}
  ReadRegStr $0 HKLM "${SETTINGS_KEY}" "Path"
  ExpandEnvStrings $0 $0
  ${Do}
    StrCpy $1 $0 1 -1
    ${IfThen} $1 != "\" ${|} ${ExitDo} ${|}
    StrCpy $0 $0 -1
  ${Loop}
  StrCpy $1 $0 1 1
  StrCpy $2 $0 2
  ${If} $1 == ":"
  ${OrIf} $2 == "\\"
    ${If} ${FileExists} "$0\*.*"
      StrCpy $INSTDIR $0
    ${EndIf}
  ${EndIf}
  ${If} $INSTDIR == ""
    StrCpy $INSTDIR "$PROGRAMFILES32\OrVane"
  ${EndIf}
  ${IfNot} ${FileExists} "$INSTDIR\OrVaneApp.exe"
    StrCpy $Note "$(ORVANE_MISSING)"
  ${EndIf}
FunctionEnd

; The player has the module loaded: then nobody may open it for writing.
Function AskToClosePlayer
  ${Do}
    System::Call 'kernel32::CreateFileW(w "$INSTDIR\${MODULE}", i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .r1 ?e'
    Pop $0
    ${If} $1 P<> -1
      System::Call 'kernel32::CloseHandle(p r1)'
    ${EndIf}
    ${If} $0 <> 32
    ${OrIf} ${Silent}
      Return
    ${EndIf}
    MessageBox MB_ABORTRETRYIGNORE|MB_ICONEXCLAMATION "$(PLAYER_RUNS)" IDRETRY again IDIGNORE goOn
    SetErrorLevel 1
    Quit
    again:
  ${Loop}
  goOn:
FunctionEnd

; The entry in the system's list of programs. Takes folder, version, size, "1" for a folder we made.
Function WriteEntry
  Pop $3
  Pop $2
  Pop $1
  Pop $0
  WriteRegStr HKLM "${ENTRY_KEY}" "DisplayName" "$(DISPLAY_NAME)"
  WriteRegStr HKLM "${ENTRY_KEY}" "DisplayVersion" "$1"
  WriteRegStr HKLM "${ENTRY_KEY}" "Publisher" "${MAKER}"
  WriteRegStr HKLM "${ENTRY_KEY}" "DisplayIcon" "$0\${UNINSTALLER},0"
  WriteRegStr HKLM "${ENTRY_KEY}" "InstallLocation" "$0"
  WriteRegStr HKLM "${ENTRY_KEY}" "UninstallString" '"$0\${UNINSTALLER}"'
  WriteRegStr HKLM "${ENTRY_KEY}" "QuietUninstallString" '"$0\${UNINSTALLER}" /S'
  WriteRegDWORD HKLM "${ENTRY_KEY}" "EstimatedSize" "$2"
  WriteRegDWORD HKLM "${ENTRY_KEY}" "FolderMade" "$3"
  WriteRegDWORD HKLM "${ENTRY_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${ENTRY_KEY}" "NoRepair" 1
FunctionEnd
!macro WriteEntry folder version size made
  Push "${folder}"
  Push "${version}"
  Push "${size}"
  Push "${made}"
  Call WriteEntry
!macroend

; One file of the new version, written beside its place under a name of this run.
!macro Unpack source name
  ClearErrors
  File "/oname=${name}.$Unique.new" "${STAGE}/${source}"
  ${If} ${Errors}
    !insertmacro Fail "$(CANNOT_WRITE)"
  ${EndIf}
!macroend
; ... and put in its place.
!macro Place name
  ClearErrors
  ${If} ${FileExists} "$INSTDIR\${name}"
    Rename "$INSTDIR\${name}" "$INSTDIR\${name}.$Unique.old"
  ${EndIf}
  ${IfNot} ${Errors}
    Rename "$INSTDIR\${name}.$Unique.new" "$INSTDIR\${name}"
  ${EndIf}
  ${If} ${Errors}
    !insertmacro Fail "$(CANNOT_WRITE)"
  ${EndIf}
  IntOp $Placed $Placed + 1
!macroend

Section
  Call AskToClosePlayer
  StrCpy $Placed 0
  StrCpy $Changing 1
  StrCpy $MadeFolder 0
  ${If} $OldFolder == $INSTDIR
  ${AndIf} $OldMade = 1
    StrCpy $MadeFolder 1
  ${EndIf}
  ${IfNot} ${FileExists} "$INSTDIR\*.*"
    System::Call 'kernel32::CreateDirectoryW(w "$INSTDIR", p 0) i .r0'
    ${If} $0 = 0
      !insertmacro Fail "$(CANNOT_WRITE)"
    ${EndIf}
    StrCpy $MadeFolder 1
    StrCpy $NewFolder 1
  ${EndIf}

  SetOutPath "$INSTDIR"
  SetOverwrite try
  !insertmacro Unpack "${MODULE}" "${MODULE}"
  !insertmacro Unpack "LICENSE" "${LICENCE}"
  !insertmacro Unpack "NOTICES" "${NOTICES}"
  ClearErrors
  WriteUninstaller "$INSTDIR\${UNINSTALLER}.$Unique.new"
  ${If} ${Errors}
    !insertmacro Fail "$(CANNOT_WRITE)"
  ${EndIf}
  !insertmacro Place "${MODULE}"
  !insertmacro Place "${LICENCE}"
  !insertmacro Place "${NOTICES}"
  !insertmacro Place "${UNINSTALLER}"

  StrCpy $Registering 1
  ClearErrors
  ExecWait '"$SYSDIR\regsvr32.exe" /s "$INSTDIR\${MODULE}"' $0
  ${If} ${Errors}
  ${OrIf} $0 <> 0
    !insertmacro Fail "$(CANNOT_REGISTER)"
  ${EndIf}
  ClearErrors
  !insertmacro WriteEntry "$INSTDIR" "${VERSION}" "${SIZE_KB}" "$MadeFolder"
  ${If} ${Errors}
    !insertmacro Fail "$(CANNOT_REGISTER)"
  ${EndIf}

  ; From here on nothing can fail that would have to be taken back.
  StrCpy $Changing 0
  Delete /REBOOTOK "$INSTDIR\${MODULE}.$Unique.old"
  Delete /REBOOTOK "$INSTDIR\${LICENCE}.$Unique.old"
  Delete /REBOOTOK "$INSTDIR\${NOTICES}.$Unique.old"
  Delete /REBOOTOK "$INSTDIR\${UNINSTALLER}.$Unique.old"
  ${If} $OldFolder != ""
  ${AndIf} $OldFolder != $INSTDIR ; OrVane has moved
    !insertmacro RemoveFile "$OldFolder" "${MODULE}"
    !insertmacro RemoveFile "$OldFolder" "${LICENCE}"
    !insertmacro RemoveFile "$OldFolder" "${NOTICES}"
    !insertmacro RemoveFile "$OldFolder" "${UNINSTALLER}"
    !insertmacro RemoveLeftovers "$OldFolder"
    ${If} $OldMade = 1
      RMDir "$OldFolder"
    ${EndIf}
  ${EndIf}
  !insertmacro RemoveLeftovers "$INSTDIR"
  ${If} ${RebootFlag}
    StrCpy $Ending "$(RESTART_DUE)"
  ${EndIf}
SectionEnd

Function .onInstSuccess
  ${If} ${RebootFlag}
    SetErrorLevel 3010
  ${EndIf}
FunctionEnd

; Also where NSIS itself gives up: a full disk, a file that cannot be unpacked.
Function .onInstFailed
  Call TakeBack
  SetErrorLevel 2
FunctionEnd

Function Fail
  Call TakeBack
  MessageBox MB_OK|MB_ICONSTOP "$Problem" /SD IDOK
  SetErrorLevel 2
  Abort
FunctionEnd

!macro TakeBackFile number name
  ${If} $Placed >= ${number}
    Rename "$INSTDIR\${name}" "$INSTDIR\${name}.$Unique.new"
  ${EndIf}
  Delete /REBOOTOK "$INSTDIR\${name}.$Unique.new"
  Rename "$INSTDIR\${name}.$Unique.old" "$INSTDIR\${name}"
!macroend
Function TakeBack
  ${IfThen} $Changing <> 1 ${|} Return ${|}
  StrCpy $Changing 0
  SetOutPath "$TEMP" ; the folder must not be ours when it goes
  !insertmacro TakeBackFile 1 "${MODULE}"
  !insertmacro TakeBackFile 2 "${LICENCE}"
  !insertmacro TakeBackFile 3 "${NOTICES}"
  !insertmacro TakeBackFile 4 "${UNINSTALLER}"
  ${If} $Registering = 1
    ${If} $OldModule == ""
      DeleteRegKey HKCR "${CLASS_KEY}"
      DeleteRegKey HKLM "${PLAYER_KEY}"
    ${Else}
      ExecWait '"$SYSDIR\regsvr32.exe" /s "$OldModule"' $0
      WriteRegStr HKCR "${CLASS_KEY}\InprocServer32" "" "$OldModule"
    ${EndIf}
    ${If} $OldFolder == ""
      DeleteRegKey HKLM "${ENTRY_KEY}"
    ${Else}
      !insertmacro WriteEntry "$OldFolder" "$OldVersion" "$OldSize" "$OldMade"
    ${EndIf}
  ${EndIf}
  ${If} $NewFolder = 1
    RMDir "$INSTDIR"
  ${EndIf}
FunctionEnd

; ---------------------------------------------------------------- uninstall

Function un.onInit
  !insertmacro CommonStart
FunctionEnd

Section Uninstall
  ; Somebody may have registered a module in another folder since: that one is not ours.
  ReadRegStr $OldModule HKCR "${CLASS_KEY}\InprocServer32" ""
  StrCpy $2 0
  ${If} $OldModule == "$INSTDIR\${MODULE}"
    StrCpy $2 1
  ${ElseIf} $OldModule != "" ; it may be written in short names
    GetFullPathName /SHORT $0 "$OldModule"
    GetFullPathName /SHORT $1 "$INSTDIR\${MODULE}"
    ${If} $0 != ""
    ${AndIf} $0 == $1
      StrCpy $2 1
    ${EndIf}
  ${EndIf}
  ${If} $2 = 1
    ExecWait '"$SYSDIR\regsvr32.exe" /u /s "$INSTDIR\${MODULE}"' $0
    ; The module may be gone or broken; its registration goes all the same.
    DeleteRegKey HKCR "${CLASS_KEY}"
    DeleteRegKey HKLM "${PLAYER_KEY}"
    ReadRegStr $0 HKCR "${CLASS_KEY}\InprocServer32" ""
    ${If} $0 != ""
      MessageBox MB_OK|MB_ICONSTOP "$(CANNOT_UNREGISTER)" /SD IDOK
      SetErrorLevel 2
      Abort
    ${EndIf}
  ${EndIf}
  SetOutPath "$TEMP"
  !insertmacro RemoveFile "$INSTDIR" "${MODULE}"
  !insertmacro RemoveFile "$INSTDIR" "${LICENCE}"
  !insertmacro RemoveFile "$INSTDIR" "${NOTICES}"
  ; It runs from a copy, unless _?= keeps it here: then whoever said so removes it.
  ${If} $EXEPATH != "$INSTDIR\${UNINSTALLER}"
    !insertmacro RemoveFile "$INSTDIR" "${UNINSTALLER}"
  ${EndIf}
  !insertmacro RemoveLeftovers "$INSTDIR"
  ReadRegDWORD $OldMade HKLM "${ENTRY_KEY}" "FolderMade"
  ${If} $OldMade = 1
    RMDir "$INSTDIR" ; only when nothing else is in it
  ${EndIf}
  DeleteRegKey HKLM "${ENTRY_KEY}"
SectionEnd

Function un.onUninstSuccess
  ${If} ${RebootFlag}
    SetErrorLevel 3010
  ${EndIf}
FunctionEnd
