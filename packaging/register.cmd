@echo off
rem Registers the plug-in that lies beside this file. See README.txt.
setlocal
set "verb=register"
set "flags=/s"
if /i "%~1"=="/u" set "verb=unregister" & set "flags=/u /s"
set "module=%~dp0OrVaneWmpPlugin.dll"
if not exist "%module%" echo OrVaneWmpPlugin.dll is not beside this file: unpack the whole zip first.& goto failed

rem The plug-in is a 32-bit one, whatever Windows is.
set "regsvr=%SystemRoot%\SysWOW64\regsvr32.exe"
if not exist "%regsvr%" set "regsvr=%SystemRoot%\System32\regsvr32.exe"

start "" /wait "%regsvr%" %flags% "%module%"
if not errorlevel 1 goto done
rem Only who has an administrator's rights may read this key.
reg query HKU\S-1-5-19 >nul 2>nul
if errorlevel 1 echo This needs an administrator's rights: right-click it and choose "Run as administrator".& goto failed
echo Windows could not %verb% the plug-in.
goto failed

:done
if "%verb%"=="register" echo Done. Start Windows Media Player: Tools, Plug-ins lists OrVane.
if "%verb%"=="unregister" echo Done. The player no longer lists OrVane; this folder can be deleted.
if not "%~2"=="/quiet" if not "%~1"=="/quiet" pause
exit /b 0

:failed
if not "%~2"=="/quiet" if not "%~1"=="/quiet" pause
exit /b 2
