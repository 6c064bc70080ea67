rem Coord Boundaries: 1000.00000 1100.00000 2000.00000 2100.00000
rem Cell Boundaries: 3 7 3 7
 
cd tile0101
 
 
rem extract initial model
 
Vorlextract ..\mesh ..\model.sus model.sus 1 9 1 9 1 12 -Expand
 
 
rem extract reference model
 
Vorlextract ..\mesh ..\ref.sus mag3d_ref.sus 1 9 1 9 1 12 -Expand -Ref ..\rocks.txt
 
 
rem run coarse forward model and calculate residual
 
@if exist mag.obs goto skipForwardModel:
 
Vorlextract ..\mesh ..\refined.sus maginv3d.mod  1 9 1 9 1 12 -Expand ..\mag.obs ..\topo.dat
 
copy ..\..\coarse\coarse.msh tilenull.msh
Vorlnullvol ..\..\coarse\coarse.msh ..\..\coarse\coarse.sus tilenull.sus 1000.00 1100.00 2000.00 2100.00 -500.000 100.000
 
magfor3d tilenull.msh mag.dat tilenull.sus ..\..\coarse\topo.dat
 
Vorldelreg mag.dat - magfor3d.mag mag.obs  2  1
 
:skipForwardModel
 
@if exist maginv3d.mtx goto skipsen:
pfweight mag_weights.inp 4
magsen3d magsen3d.inp
 
:skipsen
 
@if exist maginv3d.kap goto RestartInversion:
maginv3d maginv3d.inp
goto :FinishInversion
 
:RestartInversion
 
maginv3d maginv3d.restart
 
:FinishInversion
 
vorlerror mag.obs maginv3d.pre error.dat mesh
Vorlinsert mesh maginv3d.sus ..\mesh ..\maginv3d.sus 3 6 3 6 1 10 2 1
 
 
cd ..
