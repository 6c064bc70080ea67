rem Coord Boundaries: 1000.00000 1030.00000 2000.00000 2050.00000
rem Cell Boundaries: 1 3 1 3
