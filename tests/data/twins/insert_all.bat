
rem Clean up any previously merged data files

@if exist zarninv3d_weights.dat del zarninv3d_weights.dat
@if exist zarninv3d.old del zarninv3d.old
@if exist zarninv3d.sus ren zarninv3d.sus zarninv3d.old
@if exist refined.sus copy refined.sus zarninv3d.sus
@if exist error.dat del error.dat

rem Boundaries: 1000.00000 1050.00000 2000.00000 2050.00000
cd tile0101
Vorlinsert mesh maginv3d.sus ..\mesh ..\maginv3d.sus 3 6 3 6 1 10 2 1
cd ..

rem Boundaries: 1000.00000 1050.00000 2050.00000 2100.00000
rem cd tile0102
rem Vorlinsert mesh maginv3d.sus ..\mesh ..\maginv3d.sus 3 6 7 10 1 10
rem cd ..

