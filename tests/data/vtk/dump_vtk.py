"""Reads the ParaView files of a run with VTK's own readers and prints what they hold, one array a
line, so that a test can compare them with the values it wrote."""
import sys
import xml.etree.ElementTree as ElementTree

import vtk
from vtk.util.numpy_support import vtk_to_numpy


def numbers(array):
    return " ".join("%.10g" % value for value in vtk_to_numpy(array).ravel())


def arrays(label, data):
    for n in range(data.GetNumberOfArrays()):
        print(label, data.GetArrayName(n), numbers(data.GetArray(n)))


def read(reader_class, path):
    reader = reader_class()
    reader.SetFileName(path)
    reader.Update()
    if reader.GetErrorCode() != 0:
        sys.exit("cannot read " + path)
    return reader.GetOutput()


folder = sys.argv[1]
grid = read(vtk.vtkXMLRectilinearGridReader, folder + "/mesh.vtr")
print("mesh.vtr dimensions", *grid.GetDimensions())
print("x", numbers(grid.GetXCoordinates()))
print("y", numbers(grid.GetYCoordinates()))
print("z", numbers(grid.GetZCoordinates()))
arrays("cells", grid.GetCellData())
surface = read(vtk.vtkXMLStructuredGridReader, folder + "/topography.vts")
print("topography.vts dimensions", *surface.GetDimensions())
print("points", numbers(surface.GetPoints().GetData()))
arrays("nodes", surface.GetPointData())
readings = read(vtk.vtkXMLPolyDataReader, folder + "/mag_obs.vtp")
print("mag_obs.vtp verts", readings.GetNumberOfVerts())
print("points", numbers(readings.GetPoints().GetData()))
arrays("readings", readings.GetPointData())
tiles = read(vtk.vtkXMLPolyDataReader, folder + "/tiles.vtp")
print("tiles.vtp lines", tiles.GetNumberOfLines())
print("points", numbers(tiles.GetPoints().GetData()))
print("outlines", numbers(tiles.GetLines().GetConnectivityArray()))
arrays("tiles", tiles.GetCellData())
for dataset in ElementTree.parse(folder + "/run.pvd").getroot().iter("DataSet"):
    print("run.pvd", dataset.get("file"))
