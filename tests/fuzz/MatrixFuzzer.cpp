#include "fuzz/Bytes.h"

#include <array>
#include <complex>

using namespace Kalvio::Math;

namespace {

MatrixNM TakeMatrix(Bytes& bytes, unsigned int rows, unsigned int columns) {
    MatrixNM matrix(rows, columns);
    for (unsigned int row = 0; row < rows; ++row) {
        for (unsigned int i = 0; i < columns; ++i) matrix[row][static_cast<int>(i)] = bytes.TakeDouble();
    }
    return matrix;
}

// Of the rows, taken as vectors.
double LargestDifference(const MatrixNM& a, const MatrixNM& b) {
    Require(a.GetNumRows() == b.GetNumRows() && a.GetNumCols() == b.GetNumCols());
    double largest = 0.0;
    for (unsigned int row = 0; row < a.GetNumRows(); ++row) largest = std::max(largest, (a[row] - b[row]).Norm());
    return largest;
}

double LargestOf(const MatrixNM& a) { return LargestDifference(a, MatrixNM(a.GetNumRows(), a.GetNumCols())); }

// A square matrix times its adjoint, its inverse, and the product of its triangles.
void CheckSquare(const MatrixNM& matrix, bool tame) {
    const unsigned int n = matrix.GetNumRows();
    double determinant = 0.0, ofTranspose = 0.0;
    MatrixNM adjoint, inverse;
    Require(matrix.Determinant(determinant) && matrix.GetTranspose().Determinant(ofTranspose));
    const bool hasAdjoint = matrix.Adjoint(adjoint), hasInverse = matrix.GetInverse(inverse);
    Require(matrix.GetTranspose().GetTranspose() == matrix || !tame);
    See({determinant, hasInverse ? inverse[n - 1][0] : 0.0});
    MatrixNM identity(n, n);
    for (unsigned int i = 0; i < n; ++i) identity[i][static_cast<int>(i)] = 1.0;
    double bound = 1.0;  // of the determinant and all its terms
    for (unsigned int i = 0; i < n; ++i) bound *= n * std::max(1.0, LargestOf(matrix));
    if (tame) {
        Require(hasAdjoint && std::abs(determinant - ofTranspose) <= 1e-12 * bound);
        Require(LargestDifference(matrix * adjoint, MatrixNM(identity) *= determinant) <= 1e-12 * n * bound);
        if (hasInverse) {
            const double condition = n * LargestOf(matrix) * LargestOf(inverse);
            Require(LargestDifference(matrix * inverse, identity) <= 1e-12 * (1.0 + condition) * condition);
        }
    }
    for (const auto method :
         {LUDecompositionMethod::Crout, LUDecompositionMethod::Doolittle, LUDecompositionMethod::Cholesky}) {
        MatrixNM lower, upper;
        if (!matrix.LUDecomposition(lower, upper, method) || !tame) continue;
        const double size = 1.0 + LargestOf(matrix) + n * LargestOf(lower) * LargestOf(upper);
        Require(LargestDifference(lower * upper, matrix) <= 1e-9 + 1e-12 * size);
        VecND solution;
        if (matrix.SolveLinearSystem(matrix[0], solution, method)) See(solution.GetCoordinates());
    }
}

template <class Matrix, std::size_t n>
void CheckTransformation(const Matrix& matrix, bool tame) {
    std::array<double, n> values{};
    std::array<std::complex<double>, n> complexValues{};
    Matrix vectors, u, s, v;
    (void)matrix.GetEigenValues(values);
    (void)matrix.GetEigenVectors(values, vectors);
    const bool hasValues = matrix.GetEigenValues(complexValues);
    const bool hasSingular = matrix.SingularValueDecomposition(u, s, v);
    Matrix inverse(matrix);
    inverse.Invert();
    if (!tame) return;
    Require(hasValues && hasSingular);
    const Polynomial characteristic = matrix.GetCharacteristicPolynomial();
    Require(characteristic.GetDegree() == n);
    std::complex<double> trace;
    for (const auto& value : complexValues) {
        See({value.real(), value.imag()});
        trace += value;
    }
    See({s.Get(0, 0), u.Get(1, 2), v.Get(2, 1)});
    RequireNear(std::abs(trace + characteristic[n - 1]), 0.0, 1e-6 * (1.0 + std::abs(characteristic[n - 1])) + 1e-3);
}

void CheckRotations(Bytes& bytes) {
    const bool tame = bytes.Tame();
    const Vec3D axis = bytes.TakeVector3D(), v = bytes.TakeVector3D();
    Quaternion turn(axis, Angle(bytes.TakeDouble() / 256.0));
    turn *= Quaternion(v, axis);
    Vec3D direction;
    Angle angle;
    const bool found = turn.GetRotation(direction, angle);
    Vec3D turned = v;
    turned *= turn;
    if (!tame) return;
    Require(found && std::abs(direction.Length() - 1.0) <= 1e-9 && angle.GetRadians() >= 0.0);
    RequireNear(turned.Length(), v.Length(), 1e-9 * (1.0 + v.Length()));
    Require((v.Transform(Matrix3D(turn)) - turned).Length() <= 1e-9 * (1.0 + v.Length()));
    turned *= turn.Invert();
    Require((turned - v).Length() <= 1e-9 * (1.0 + v.Length()));
}

// What comes out as a root is one: the value there is rounding.
void CheckRoots(Bytes& bytes) {
    const double a = bytes.TakeDouble(), b = bytes.TakeDouble(), c = bytes.TakeDouble(), d = bytes.TakeDouble();
    const CubicFunction cubic(a, b, c, d);
    double roots[3] = {};
    const int count = cubic.GetRoots(roots);
    Require(count >= 0 && count <= 3);
    for (int i = 0; i < count && bytes.Tame(); ++i) {
        const double x = std::abs(roots[i]);
        const double size = ((std::abs(a) * x + std::abs(b)) * x + std::abs(c)) * x + std::abs(d);
        RequireNear(cubic.GetValue(roots[i]), 0.0, 1e-5 * size + 1e-9);
        Require(i == 0 || roots[i] >= roots[i - 1]);
    }
    const Polynomial polynomial{d, c, b, a, bytes.TakeDouble(), bytes.TakeDouble()};
    Polynomial rest;
    std::vector<Polynomial> factors;
    if (polynomial.FindQuadraticFactors(rest, factors)) {
        for (const Polynomial& factor : factors) See({factor[0], factor[1]});
        Require(rest.GetDegree() + 2 * factors.size() == polynomial.GetDegree());
    }
    double remainder = 0.0;
    (void)polynomial.Divide(Polynomial{b, a, 1.0}, remainder);
    (void)polynomial.Derive(true).Evaluate(a);
}

}  // namespace

void Kalvio::Math::FuzzMatrix(Bytes& bytes) {
    const bool tame = bytes.Tame();
    CheckRotations(bytes);
    CheckRoots(bytes);
    double elements[16];
    for (double& element : elements) element = bytes.TakeDouble();
    CheckTransformation<Matrix2D, 3>(Matrix2D(elements), tame);
    CheckTransformation<Matrix3D, 4>(Matrix3D(elements), tame);
    const unsigned int n = 1 + bytes.TakeCount(9);
    CheckSquare(TakeMatrix(bytes, n, n), tame);
    const unsigned int m = bytes.TakeCount(5);
    const MatrixNM wide = TakeMatrix(bytes, n, m);
    Require((wide * wide.GetTranspose()).GetNumRows() == n || m == 0);
    (void)(wide * VecND(m));
    double untouched = 7.0;
    if (n != m) Require(!wide.Determinant(untouched) && untouched == 7.0);
}
