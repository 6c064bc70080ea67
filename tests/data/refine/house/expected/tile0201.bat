rem Coord Boundaries: 1300.00000 1450.00000 2100.00000 2300.00000
rem Cell Boundaries: 6 9 2 6
 
cd tile0201
 
 
rem run coarse forward model and calculate residual
 
 
Zarnextract ..\mesh ..\refined.sus zarninv3d_tile.sus  5 8 2 6 1 5
 
copy ..\..\coarse.msh tilenull.msh
Zarnnullvol ..\..\coarse.msh ..\..\coarse.sus tilenull.sus 1250.00 1450.00 2100.00 2350.00 -150.000 0.000
 
zarnpre3d ..\..\zarninv3d.mtx tilenull.sus mag_null.obs mag.obs MASK=0
 
 
@if exist zarninv3d.mtx goto skipsen:
tasklist | findstr " Zarnsen3D_RPCServer.exe" || START "" "Zarnsen3D_RPCServer.exe"
zarnsen3d_cluster_controller "%~dp0tile0201"
 
:skipsen
 
@if exist zarninv3d.kap goto RestartInversion:
zarninv3d zarninv3d.inp
goto :FinishInversion
 
:RestartInversion
 
zarninv3d zarninv3d.restart
 
:FinishInversion
 
Zarnerror mag.obs zarninv3d.pre error.dat mesh
Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 6 8 2 5 1 5 1 1
 
 
cd ..
