rem Coord Boundaries: 1100.00000 1300.00000 2300.00000 2450.00000
rem Cell Boundaries: 2 6 6 9
 
cd tile0102
 
 
rem run coarse forward model and calculate residual
 
 
Zarnextract ..\mesh ..\refined.sus zarninv3d_tile.sus  2 6 5 8 1 5
 
copy ..\..\coarse.msh tilenull.msh
Zarnnullvol ..\..\coarse.msh ..\..\coarse.sus tilenull.sus 1100.00 1350.00 2250.00 2450.00 -150.000 0.000
 
zarnpre3d ..\..\zarninv3d.mtx tilenull.sus mag_null.obs mag.obs MASK=0
 
 
@if exist zarninv3d.mtx goto skipsen:
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
Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 2 5 6 8 1 5 1 1
 
 
cd ..
