rem Coord Boundaries: 0.00000 40.00000 0.00000 40.00000
rem Cell Boundaries: 1 5 1 5
 
cd tile0101
 
 
rem run coarse forward model and calculate residual
 
 
Zarnextract ..\mesh ..\refined.sus zarninv3d_tile.sus  1 4 1 4 1 3
 
copy ..\..\coarse\mesh tilenull.msh
Zarnnullvol ..\..\coarse\mesh ..\..\coarse\model.sus tilenull.sus 0.00 40.00 0.00 40.00 -15.000 0.000
 
zarnpre3d "..\..\a.mtx|..\..\b.mtx" tilenull.sus mag_null.obs mag.obs MASK=0
 
 
@if not exist a.mtx goto doMTX:
@if not exist b.mtx goto doMTX:
goto skipsen:
 
:doMTX
zarnsen3d zarnsen3d.inp
 
:skipsen
 
@if exist zarninv3d.kap goto RestartInversion:
zarninv3d zarninv3d.inp
goto :FinishInversion
 
:RestartInversion
 
zarninv3d zarninv3d.restart
 
:FinishInversion
 
Zarnerror mag.obs zarninv3d.pre error.dat mesh
Zarninsert mesh zarninv3d.sus ..\mesh ..\zarninv3d.sus 1 4 1 4 1 3
 
 
cd ..
