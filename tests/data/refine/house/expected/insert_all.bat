
rem Clean up any previously merged data files

@if exist zarninv3d_weights.dat del zarninv3d_weights.dat
@if exist zarninv3d.old del zarninv3d.old
@if exist zarninv3d.sus ren zarninv3d.sus zarninv3d.old
@if exist refined.sus copy refined.sus zarninv3d.sus
@if exist error.dat del error.dat

rem Boundaries: 1100.00000 1300.00000 2100.00000 2300.00000
cd tile0101
Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 2 5 2 5 1 4 1 1
cd ..

rem Boundaries: 1100.00000 1300.00000 2300.00000 2450.00000
cd tile0102
Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 2 5 6 8 1 4 1 1
cd ..


rem Boundaries: 1300.00000 1450.00000 2100.00000 2300.00000
rem cd tile0201
rem Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 6 8 2 5 1 4 1 1
rem cd ..

rem Boundaries: 1300.00000 1450.00000 2300.00000 2450.00000
cd tile0202
Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 6 8 6 8 1 4 1 1
cd ..


