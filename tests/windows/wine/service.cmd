@rem Runs the capture driver as a service and says what went wrong. One program from the first step to the
@rem last: Wine ends its services when no program is left.
@echo off
sc create capture type= kernel start= demand binPath= %SystemRoot%\System32\drivers\capture.sys
if errorlevel 1 echo capture: not created
sc start capture
if errorlevel 1 echo capture: not started
sc stop capture
if errorlevel 1 echo capture: not stopped
sc delete capture
if errorlevel 1 echo capture: not deleted
