rem Num data 2
call tile0101.bat
rem Num data 1
rem call tile0201.bat

