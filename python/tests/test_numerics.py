"""Numerics and geometry with arrays in and out."""

import math

import numpy
import pytest

import ZxCore3D as zx

A = numpy.array([[2.0, 1, 0], [1, 3, 1], [0, 1, 4]])  # determinant 18


def test_products_and_sums():
    b = numpy.arange(6.0).reshape(3, 2)
    assert (zx.mul(A, b) == A @ b).all()
    assert list(zx.mul(A, [1, 2, 3])) == [4, 10, 14]
    with pytest.raises(zx.TZxMessage, match="l.SizeX != r.SizeY"):
        zx.mul(b, A)
    assert (zx.transpose(b) == b.T).all()
    assert (zx.outer_dot([1, 2], [3, 4, 5]) == [[3, 4, 5], [6, 8, 10]]).all()
    assert zx.dot([1, 2, 3], [4, 5, 6]) == 32
    assert (zx.Norm([3, 4]), zx.NormSqr([3, 4])) == (5, 25)
    assert (zx.min(A), zx.max(A), zx.summ(A)) == (0, 4, 13)
    assert (zx.abs(-A) == A).all()
    assert (zx.diff(A, A) == 0).all() and zx.diff(A, b) is None
    assert list(zx.sub([3, 2], [1, 5])) == [2, -3]
    assert zx.equal(A, A + 1e-9, 1e-8) and not zx.equal(A, A + 1e-7, 1e-8)
    assert zx.ToString([1, 2]) == "{1.0000000000000000, 2.0000000000000000}"


def test_what_is_in_place_is_in_place():
    m = numpy.ones((2, 3))
    zx.add(m, numpy.full((2, 3), 2.0))
    assert (m == 3).all()
    zx.fill(m, 7)
    assert (m == 7).all()
    v = numpy.zeros(4)
    zx.fill(v, 2)
    zx.add(v, [1, 1, 1, 1])
    assert (v == 3).all()
    with pytest.raises(TypeError):
        zx.fill(numpy.ones((2, 2), numpy.float32), 1)
    with pytest.raises(TypeError):
        zx.fill(numpy.ones((4, 4))[:, ::2], 1)
    frozen = numpy.ones(3)
    frozen.setflags(write=False)
    with pytest.raises(ValueError):
        zx.add(frozen, [1, 1, 1])


def test_solvers():
    x = numpy.array([1.0, -2, 3])
    b = A @ x
    for solve in (zx.SolveGauss, zx.LineSysGauss1, zx.LineSysGauss2):
        assert numpy.allclose(solve(A, b), x, rtol=0, atol=1e-14)
    before = A.copy()
    assert (A == before).all()
    assert numpy.allclose(zx.inverse(A) @ A, numpy.eye(3), rtol=0, atol=1e-14)
    singular = numpy.zeros((2, 2))
    assert zx.LineSysGauss1(singular, [1, 1]) is None
    assert zx.LineSysGauss2(singular, [1, 1]) is None
    assert zx.inverse(singular) is None
    assert zx.SolveGauss(numpy.eye(2), [1, 1], 1.0) is None, "by the pivot's position"
    with pytest.raises(ValueError, match="square"):
        zx.inverse(numpy.zeros((2, 3)))
    with pytest.raises(ValueError):
        zx.LineSysGauss1(A, [1, 2])


def test_least_squares():
    # y = 2 x + 1 through points with an error that is orthogonal to both columns.
    a = numpy.array([[0, 1], [1, 1], [2, 1], [3, 1.0]])
    error = numpy.array([1, -1, -1, 1]) * 0.25
    assert numpy.allclose(zx.lsm(a, a @ [2, 1] + error), [2, 1], rtol=0, atol=1e-13)
    assert (zx.mul_mtm(a) == [[14, 6], [6, 4]]).all()
    assert list(zx.mul_mtv(a, [1, 1, 1, 1])) == [6, 4]
    assert zx.lsm(numpy.zeros((3, 2)), [1, 2, 3]) is None


def test_newton():
    class Square(zx.TFunc1):
        def Value(self, x):
            return x * x - 2 if x > -10 else None

    solver = zx.TNewtonSolver()
    assert solver.MaxHalvings == 8
    assert abs(solver.Solve(Square(), 1.0, 1e-6, 50) - math.sqrt(2)) < 1e-6
    assert solver.Solve(Square(), -20.0, 1e-6, 50) is None
    assert abs(Square().Deriv(3, 1e-3) - 6) < 1e-9, "the central difference"

    class Slope(Square):
        def Deriv(self, x, h):
            return 2 * x
    assert abs(solver.Solve(Slope(), 1.0, 1e-12, 50) - math.sqrt(2)) < 1e-12


def test_splines():
    # Through 0, 1, 0 with natural ends: the two halves mirror each other, and the slopes are +-1.5.
    first, second = zx.CalcCubeSpline1D([0, 1, 0], False)
    assert numpy.allclose(first, [0, 1.5, 0, -0.5], rtol=0, atol=1e-14)
    assert numpy.allclose(second, [1, 0, -1.5, 0.5], rtol=0, atol=1e-14)
    assert zx.CalcCubeSpline1D([1], False) is None
    points = numpy.array([[0, 5], [1, 6], [0, 5.0]])
    curve = zx.CalcCubeSpline2D(points, False)
    assert curve.shape == (2, 2, 4)
    assert numpy.allclose(curve[0, 0], first) and numpy.allclose(curve[1, 0], first + [5, 0, 0, 0])
    assert zx.CalcCubeSpline3D(numpy.eye(3), True).shape == (3, 3, 4)
    line = zx.CalcCubeSplineXY([[0, 0], [1, 2], [3, 6]], 2, 0.0, 2, 0.0)
    assert numpy.allclose(line, [[0, 2, 0, 0], [0, 2, 0, 0]], rtol=0, atol=1e-12)
    assert zx.CalcCubeSplineXY([[0, 0], [0, 2]], 2, 0.0, 2, 0.0) is None
    assert zx.Polynom3_TransX([0, 0, 1, 0], 1.0) == [1, -2, 1, 0], "(x - 1)^2"
    with pytest.raises(TypeError):
        zx.CalcCubeSpline2D([1, 2, 3], False)


def test_scalars():
    assert [zx.FloorPow2(n) for n in (0, 1, 5, 8)] == [1, 1, 4, 8]
    assert [zx.CeilPow2(n) for n in (0, 5, 8)] == [1, 8, 8]
    assert [zx.RoundPow2(n) for n in (0, 5, 6)] == [0, 4, 8]
    assert zx.FloorPow10(100) == 10.0
    assert zx._SinCos(0.0) == (0, 1)


def test_a_homography_is_found():
    h = numpy.array([[1.5, 0.25, 3], [-0.5, 2, 1], [0.125, 0.0625, 1]])
    src = numpy.array([[0, 0], [4, 0], [4, 3], [0, 3], [2, 1.0]])
    mapped = numpy.c_[src, numpy.ones(5)] @ h.T
    found = zx.GetProjectiveTransform(src, mapped[:, :2] / mapped[:, 2:])
    assert found.shape == (3, 3) and found[2, 2] == 1
    assert numpy.allclose(found, h, rtol=0, atol=1e-9)
    assert zx.GetProjectiveTransform(src[:3], src[:3]) is None
    with pytest.raises(TypeError):
        zx.GetProjectiveTransform(src, src[:3])


def test_maps_of_space():
    m = numpy.array([[2, 0, 1, 5], [0, 3, 0, -1], [1, 0, 1, 2], [0, 0, 0, 1.0]])
    src = numpy.array([[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1], [1, 1, 1], [2, 1, 3.0]])
    dst = (numpy.c_[src, numpy.ones(6)] @ m.T)[:, :3]
    assert numpy.allclose(zx.GetAffineTransform(src, dst), m, rtol=0, atol=1e-11)
    assert numpy.allclose(zx.GetProjectiveTransform(src, dst), m, rtol=0, atol=1e-8)


def test_contacts():
    a = [[0, 0, 0], [4, 0, 0], [0, 4, 0]]
    b = [[1, 1, -1], [1, 1, 1], [2, 1, 1]]
    assert zx.IsIntersectTriangles(a, b, 1e-9)
    segment = zx.GetIntersectTriangles(a, b, 1e-9)
    assert sorted(map(tuple, segment)) == [(1, 1, 0), (1.5, 1, 0)]
    far = numpy.array(b) + 10
    assert not zx.IsIntersectTriangles(a, far, 1e-9)
    assert zx.GetIntersectTriangles(a, far, 1e-9).shape == (0, 3)
    assert zx.IsSelfIntersected([[0, 0], [1, 1], [1, 0], [0, 1]])
    assert not zx.IsSelfIntersected([[0, 0], [1, 0], [1, 1], [0, 1]])


def test_lines_of_cells():
    assert zx.DrawLine3d((0, 0, 0), (3, 0, 0)).tolist() == [[x, 0, 0] for x in range(4)]
    thick = zx.DrawLine3d((0, 0, 0), (1, 0, 0), 3)
    assert thick.shape == (18, 3) and thick[:, 1:].min() == -1
    assert zx.DrawLine3d((0, 0, 0), (1, 0, 0), -1).shape == (0, 3)


def test_bounds():
    box = zx.VBOX()
    box.SetEmpty()
    assert box.IsEmpty()
    for point in ((1, 2, 3), (-1, 5, 0)):
        box.Expand(point)
    assert (box.Min, box.Max) == ([-1, 2, 0], [1, 5, 3])

    class Double(zx.TZx3DTransform):
        def TransformPoint(self, point):
            return [2 * c for c in point]

    out = zx.Transform(box, Double())
    assert (out.Min, out.Max) == ([-2, 4, 0], [2, 10, 6])
    sphere = zx.Transform(zx.VSPHERE((1, 0, 0), 2.0), 8, Double())
    assert numpy.allclose(sphere.Center, [2, 0, 0]) and abs(sphere.Radius - 4) < 1e-12
    with pytest.raises(ValueError, match="steps"):
        zx.Transform(sphere, 7, Double())

    class Broken(zx.TZx3DTransform):
        def TransformPoint(self, point):
            raise LookupError("mine")
    with pytest.raises(LookupError):
        zx.Transform(box, Broken())
    rectangle = zx.VRECT()
    rectangle.SetEmpty()
    rectangle.Expand((3, 4))
    assert rectangle.Min == rectangle.Max == [3, 4]


def test_frusta():
    # The cube from -1 to 1: planes in opposing pairs.
    f = zx.TFrustum_T()
    f.Plains = [[1, 0, 0, -1], [-1, 0, 0, -1], [0, 1, 0, -1], [0, -1, 0, -1], [0, 0, 1, -1],
                [0, 0, -1, -1]]
    corners = f.GetCone()
    assert sorted(map(tuple, corners)) == sorted(
        (x, y, z) for x in (-1, 1) for y in (-1, 1) for z in (-1, 1))
    zx.SetCone(f, corners)
    assert f.Plains.shape == (6, 4)
    assert zx.CrossPlains((1, 0, 0, -1), (0, 1, 0, -2), (0, 0, 1, -3)) == [1, 2, 3]
    assert zx.CrossPlains((1, 0, 0, -1), (1, 0, 0, -2), (0, 0, 1, -3)) is None
