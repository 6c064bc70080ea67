rem Coord Boundaries: 1300.00000 1450.00000 2300.00000 2450.00000
rem Cell Boundaries: 6 9 6 9
 
cd tile0202
 
 
rem extract initial model
 
Vorlextract ..\mesh ..\coarse.sus coarse.sus 5 8 5 8 1 5
 
 
rem run coarse forward model and calculate residual
 
@if exist mag.obs goto skipForwardModel:
 
Vorlextract ..\mesh ..\refined.sus maginv3d.mod  5 8 5 8 1 5 ..\mag.obs
 
copy ..\..\coarse.msh tilenull.msh
Vorlnullvol ..\..\coarse.msh ..\..\coarse.sus tilenull.sus 1250.00 1450.00 2250.00 2450.00 50.000 200.000
 
magfor3d tilenull.msh mag.dat tilenull.sus
 
Vorldelreg mag.dat - magfor3d.mag mag.obs  2  1
 
:skipForwardModel
 
@if exist maginv3d.mtx goto skipsen:
magsen3d magsen3d.inp
 
:skipsen
 
@if exist maginv3d.kap goto RestartInversion:
maginv3d maginv3d.inp
goto :FinishInversion
 
:RestartInversion
 
maginv3d maginv3d.restart
 
:FinishInversion
 
vorlerror mag.obs maginv3d.pre error.dat mesh
Vorlinsert mesh maginv3d.sus ..\mesh ..\maginv3d.sus 6 8 6 8 1 5 1 1
 
 
cd ..
