@echo off
rem Tries OrVane's plug-in for Windows Media Player on this machine and writes report.txt beside this
rem file. "check.cmd player" tries it in the real player; "demo" and "console" show it. See README.txt.
setlocal
pushd "%~dp0"
set "wait=1"
if /i "%~1"=="/quiet" set "wait=0" & shift
if not exist programs\check.exe echo programs\check.exe is not here: unpack the whole zip first.& set "code=2" & goto done
programs\check.exe %1 %2
set "code=%errorlevel%"
rem Still there only when the check was cut short.
if exist programs\before.bin programs\check.exe putback
:done
popd
if "%wait%"=="1" pause
exit /b %code%
