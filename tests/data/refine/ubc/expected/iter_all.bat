rem Num data 6
call tile0101.bat
rem Num data 6
call tile0102.bat

rem Num data 6
rem call tile0201.bat
rem Num data 6
call tile0202.bat

