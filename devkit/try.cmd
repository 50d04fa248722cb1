@echo off
rem The stand-in player with the plug-in, and the application's console at this prompt.
rem "try.cmd mine" starts the player alone, for an application of your own. See README.txt.
setlocal
pushd "%~dp0"
set "code=2"
set player=programs\player.exe --library=music --plugin=programs\OrVaneWmpPlugin.dll --script=-
if not exist programs\player.exe echo programs\player.exe is not here: unpack the whole zip first.& goto done
if "%~1"=="" goto console
if /i "%~1"=="mine" goto mine
echo try.cmd takes no word, or the word mine. README.txt tells more.
goto done
:mine
echo Start your application now. The player goes on when the mutex and both pipes are there.
echo Here you can type what the player shall do, for example: play 0, sendto-media all, move 60 40 800 600, close
%player%
set "code=%errorlevel%"
goto done
:console
echo The player opens in a window of its own. Type "help" here for all commands, "close" and "quit" to end.
start "The stand-in player" %player%
programs\OrVaneApp.exe
set "code=%errorlevel%"
:done
popd
exit /b %code%
