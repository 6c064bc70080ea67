rem Num data 25
call tile0101.bat
rem Num data 3
rem call tile0102.bat

