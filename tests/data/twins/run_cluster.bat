tasklist | findstr " Zarnsen3D_RPCServer.exe" || START "" "Zarnsen3D_RPCServer.exe"
zarnsen3d_cluster_controller "%~dp0"
call run_zarninv3d.bat
Vorlextract mesh C:\data\bounds.sus mag3d_bounds.sus 1 20 1 20 1 15 -Bounds C:\data\rock props.txt
echo Inversion done: 100%
pause
