rem Coord Boundaries: 1030.00000 1060.00000 2000.00000 2050.00000
rem Cell Boundaries: 3 4 1 3
