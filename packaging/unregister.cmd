@echo off
rem Takes the plug-in's registration away again. See README.txt.
"%~dp0register.cmd" /u %1
