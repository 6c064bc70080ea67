rem Coord Boundaries: 1000.00000 1100.00000 2100.00000 2200.00000
rem Cell Boundaries: 3 7 7 11
 
cd tile0102
 
 
rem run coarse forward model and calculate residual
 
 
Zarnextract ..\mesh ..\refined.sus zarninv3d_tile.sus  1 9 5 13 1 30
 
copy ..\..\coarse_files\coarse.msh tilenull.msh
Zarnnullvol "..\..\coarse_files\coarse.msh" "..\..\coarse_files\coarse.sus" tilenull.sus 1000.00 1100.00 2100.00 2200.00 -900.000 0.000
 
zarnpre3d "..\..\mag1.mtx|..\..\mag2.mtx" tilenull.sus mag_null.obs mag.obs MASK=0
 
@if not exist mag1.mtx goto doMTX:
@if not exist mag2.mtx goto doMTX:
goto skipsen:
 
:doMTX
tasklist | findstr " Zarnsen3D_RPCServer.exe" || START "" "Zarnsen3D_RPCServer.exe"
zarnsen3d_cluster_controller "%~dp0tile0102"
 
:skipsen
 
@if exist zarninv3d.kap goto RestartInversion:
zarninv3d zarninv3d.inp
goto :FinishInversion
 
:RestartInversion
 
zarninv3d zarninv3d.restart
 
:FinishInversion
 
Zarnerror mag.obs zarninv3d.pre error.dat mesh
Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 3 6 7 10 1 25
 
 
cd ..
