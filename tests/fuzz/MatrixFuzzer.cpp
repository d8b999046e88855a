#include "core/Decompositions.h"

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

MatrixNM Without(const MatrixNM& matrix, unsigned int row, int column) {
    const unsigned int n = matrix.GetNumRows();
    MatrixNM rest(n - 1, n - 1);
    for (unsigned int i = 0; i < n - 1; ++i) {
        const VecND& from = matrix[i < row ? i : i + 1];
        for (int j = 0; j < static_cast<int>(n) - 1; ++j) rest[i][j] = from[j < column ? j : j + 1];
    }
    return rest;
}

double DeterminantOf(const MatrixNM& matrix) {
    double determinant = 0.0;
    Require(matrix.Determinant(determinant));
    return determinant;
}

MatrixNM Identity(unsigned int n) {
    MatrixNM identity(n, n);
    for (unsigned int i = 0; i < n; ++i) identity[i][static_cast<int>(i)] = 1.0;
    return identity;
}

// Of a tame matrix of elements up to 1: the cofactors are minors, to the last bit where both are expanded; but that
// determinants with equal rows are exactly 0.
void CheckCofactors(const MatrixNM& matrix) {
    const unsigned int n = matrix.GetNumRows();
    const auto slack = [n](double expanded) { return n > 8 ? 1e-11 : expanded == 0.0 ? 1e-14 : 0.0; };
    MatrixNM cofactors(matrix), adjoint(matrix), inverse(matrix);  // an output may be the input
    Require(cofactors.CoFactor(cofactors) && adjoint.Adjoint(adjoint) && adjoint == cofactors.GetTranspose());
    double sum = 0.0;
    for (unsigned int i = 0; i < n && n > 1; ++i) {
        for (int j = 0; j < static_cast<int>(n); ++j) {
            const double minor = DeterminantOf(Without(matrix, i, j));
            RequireNear(cofactors[i][j], (static_cast<int>(i) + j) % 2 == 0 ? minor : -minor, slack(minor));
            if (i == 0) sum += matrix[0][j] * cofactors[0][j];
        }
    }
    const double determinant = DeterminantOf(matrix);
    if (n > 1) RequireNear(determinant, sum, slack(determinant));
    Require(inverse.GetInverse(inverse) == (std::abs(determinant) >= 1e-10));
    if (std::abs(determinant) < 1e-10) return;
    const double condition = n * LargestOf(matrix) * LargestOf(inverse);
    RequireNear(LargestDifference(matrix * inverse, Identity(n)), 0.0, 1e-12 * (1.0 + condition) * condition);
}

// What is decomposed is a square and more, so that its pivots are as large as 1.
void CheckTriangles(const MatrixNM& root) {
    const unsigned int n = root.GetNumRows();
    MatrixNM matrix = root * root.GetTranspose();
    for (unsigned int i = 0; i < n; ++i) matrix[i][static_cast<int>(i)] += 1.0;
    for (const auto method :
         {LUDecompositionMethod::Crout, LUDecompositionMethod::Doolittle, LUDecompositionMethod::Cholesky}) {
        MatrixNM lower, upper;
        VecND solution;
        Require(matrix.LUDecomposition(lower, upper, method));
        Require(LargestDifference(lower * upper, matrix) <= 1e-13 * n);
        for (int i = 0; i < static_cast<int>(n); ++i) {
            const auto row = static_cast<unsigned int>(i);
            Require(method == LUDecompositionMethod::Cholesky ||
                    (method == LUDecompositionMethod::Crout ? upper : lower)[row][i] == 1.0);
            for (int j = 0; j < i; ++j) Require(upper[row][j] == 0.0 && lower[static_cast<unsigned int>(j)][i] == 0.0);
        }
        Require(matrix.SolveLinearSystem(matrix * root[0], solution, method));
        See(solution.GetCoordinates());
        Require(solution.IsEqualTo(root[0], 1e-12 * n));
    }
}

// Of any: what fails leaves its output.
void CheckSquare(const MatrixNM& matrix) {
    MatrixNM lower, upper;
    VecND solution(99U);
    double determinant = 0.0;
    Require(matrix.Determinant(determinant));
    (void)matrix.Adjoint(lower);
    (void)matrix.GetInverse(lower);
    (void)matrix.LUDecomposition(lower, upper, LUDecompositionMethod::Doolittle);
    const bool isSolved = matrix.SolveLinearSystem(matrix[0], solution, LUDecompositionMethod::Crout);
    Require(isSolved == (solution.GetDimension() != 99));
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
    if (tame) {
        double size = 1.0;
        const unsigned int kind = bytes.TakeCount(6);
        Matrix3D matrix;
        for (int k = 0; k < 16; ++k) {
            const int i = k / 4, j = k % 4;
            double element = elements[k];
            if (kind == 1 && i > j) element = 0.0;
            if (kind == 2) element *= std::pow(1e4, i - j);
            if (kind == 3) element *= j == 1 ? 1e-160 : j == 3 ? 1e-300 : 1.0;
            if (kind == 4) element = elements[i] * elements[4 + j];  // rank 1
            matrix.Set(i, j, element);
            size = std::max(size, std::abs(element));
        }
        double trace = 0.0;
        bool isApart = kind == 1;  // triangular, the eigenvalues stand on the diagonal
        for (int i = 0; i < 4; ++i) {
            trace += matrix.Get(i, i);
            for (int j = 0; j < i; ++j) isApart &= std::abs(matrix.Get(i, i) - matrix.Get(j, j)) > 0.01 * size;
        }
        CheckDecompositions(matrix, size, isApart || (kind == 4 && std::abs(trace) > 0.1 * size));
        CheckDecompositions(matrix += matrix.GetTranspose(), 2.0 * size, true);
    }
    const unsigned int n = 1 + bytes.TakeCount(12);
    MatrixNM square = TakeMatrix(bytes, n, n);
    CheckSquare(square);
    if (tame) {
        square *= 0x1p-11;
        CheckTriangles(square);
        CheckCofactors(square);
        if (n > 1) square[n - 1] = square[0];
        Require(n == 1 || DeterminantOf(square) == 0.0);
        CheckCofactors(square);
    }
    if (n > 2 && n <= 8) {  // whole numbers are expanded exactly
        for (unsigned int k = 0; k < n * n; ++k) square[k / n][static_cast<int>(k % n)] = bytes.TakeCount(18) - 9.0;
        square[n - 1] = square[0] + square[1];
        Require(DeterminantOf(square) == 0.0 && !MatrixNM(square).GetInverse(square));
    }
    const unsigned int m = bytes.TakeCount(5);
    const MatrixNM wide = TakeMatrix(bytes, n, m);
    Require((wide * wide.GetTranspose()).GetNumRows() == n || m == 0);
    (void)(wide * VecND(m));
    double untouched = 7.0;
    if (n != m) Require(!wide.Determinant(untouched) && untouched == 7.0);
}
