#include "kalvio/core/MatrixNM.h"
#include "support/Testing.h"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace Kalvio::Math {
namespace {

using Method = LUDecompositionMethod;

MatrixNM From(const std::vector<std::vector<double>>& rows) {
    MatrixNM m(static_cast<unsigned int>(rows.size()), static_cast<unsigned int>(rows.front().size()));
    for (unsigned int i = 0; i < m.GetNumRows(); ++i) m[i].SetCoordinates(rows[i]);
    return m;
}

MatrixNM Diagonal(const std::vector<double>& values) {
    MatrixNM m(static_cast<unsigned int>(values.size()), static_cast<unsigned int>(values.size()));
    for (unsigned int i = 0; i < m.GetNumRows(); ++i) m[i][static_cast<int>(i)] = values[i];
    return m;
}

class MatrixNMTest : public testing::Test {
protected:
    MatrixNM Random(unsigned int n, unsigned int columns) {
        MatrixNM m(n, columns);
        for (unsigned int k = 0; k < n * columns; ++k)
            m[k / columns][static_cast<int>(k % columns)] = random(-1.0, 1.0);
        return m;
    }

    RandomNumbers random{20240606};
};

bool AreNear(const MatrixNM& a, const MatrixNM& b, double tolerance) {
    bool near = a.GetNumRows() == b.GetNumRows();
    for (unsigned int i = 0; near && i < a.GetNumRows(); ++i) near = a[i].IsEqualTo(b[i], tolerance);
    return near;
}

MatrixNM Identity(unsigned int n) { return Diagonal(std::vector<double>(n, 1.0)); }

MatrixNM Without(const MatrixNM& m, unsigned int row, int column) {
    const unsigned int n = m.GetNumRows();
    MatrixNM rest(n - 1, n - 1);
    for (unsigned int i = 0; i < n - 1; ++i) {
        const VecND& from = m[i < row ? i : i + 1];
        for (int j = 0; j < static_cast<int>(n) - 1; ++j) rest[i][j] = from[j < column ? j : j + 1];
    }
    return rest;
}

double DeterminantOf(const MatrixNM& m) {
    double determinant = kNan;
    EXPECT_TRUE(m.Determinant(determinant));
    return determinant;
}

TEST_F(MatrixNMTest, DeterminantAndCofactorsAgreeWithTheExpansion) {
    EXPECT_EQ(DeterminantOf(Diagonal({-3.0})), -3.0);
    for (const unsigned int n : {2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 12U}) {
        const double tolerance = n <= 8 ? 0.0 : 1e-11;  // expanded, to the last bit; the others are eliminated
        for (int run = 0; run < 12; ++run) {
            const unsigned int lost = run % 3 == 0 ? 0 : run % 3 == 1 ? 1 : 2;  // full rank, rank n - 1, rank n - 2
            MatrixNM m = lost == 0 ? Random(n, n) : Random(n, n - lost) * Random(n - lost, n);
            const int zeroed = run / 3;  // exact zero columns and rows as well, the last ones included
            for (unsigned int i = 0; zeroed == 1 && i < n; ++i) m[i][static_cast<int>(n) / 2] = 0.0;
            if (zeroed == 2) m[n - 1] = VecND(n);
            for (unsigned int i = 0; zeroed == 3 && i < n; ++i) m[i][0] = m[i][static_cast<int>(n) - 1] = 0.0;
            MatrixNM cofactors(m), adjoint(m);  // an output may be the input
            ASSERT_TRUE(cofactors.CoFactor(cofactors) && adjoint.Adjoint(adjoint));
            EXPECT_TRUE(adjoint == cofactors.GetTranspose());
            double sum = 0.0;
            for (unsigned int i = 0; i < n; ++i) {
                for (int j = 0; j < static_cast<int>(n); ++j) {
                    const double sign = (static_cast<int>(i) + j) % 2 == 0 ? 1.0 : -1.0;
                    EXPECT_NEAR(cofactors[i][j], sign * DeterminantOf(Without(m, i, j)), tolerance)
                        << n << " rows, run " << run;
                    if (i == 0) sum += m[0][j] * cofactors[0][j];
                }
            }
            EXPECT_NEAR(DeterminantOf(m), sum, tolerance);
        }
    }
}

TEST_F(MatrixNMTest, InverseUndoesEverySize) {
    for (unsigned int n = 1; n <= 70; n += n < 12 ? 1 : 7) {
        MatrixNM m = Random(n, n);
        for (unsigned int i = 0; i < n; ++i) m[i][static_cast<int>((i * 3 + 1) % n)] += 4.0;  // pivots off the diagonal
        MatrixNM inverse(m);
        ASSERT_EQ(inverse.GetInverse(inverse), std::abs(DeterminantOf(m)) >= 1e-10) << n;
        EXPECT_TRUE(AreNear(m * inverse, Identity(n), 1e-11)) << n;
        for (int run = 0; run < 5 && n > 1; ++run) {
            m = Random(n, n);
            m[n - 1 - static_cast<unsigned int>(run) % (n / 2)] = m[static_cast<unsigned int>(run) % (n / 2)];
            EXPECT_EQ(DeterminantOf(m), 0.0) << "two equal rows of " << n;
        }
    }
    for (int run = 0; run < 200; ++run) {  // integers, exact by expansion: the last row is the sum of the first two
        const unsigned int n = 5 + static_cast<unsigned int>(run) % 4;
        MatrixNM m(n, n);
        for (unsigned int k = 0; k < n * n; ++k) m[k / n][static_cast<int>(k % n)] = std::round(random(-9.0, 9.0));
        m[n - 1] = m[0] + m[1];
        MatrixNM inverse;
        EXPECT_TRUE(DeterminantOf(m) == 0.0 && !m.GetInverse(inverse)) << "run " << run;
    }
}

TEST_F(MatrixNMTest, InverseFailsByTheDeterminant) {
    const auto nine = [](std::vector<double> values) {
        values.resize(9, 1.0);
        return Diagonal(values);
    };
    const std::tuple<const char*, MatrixNM, bool> rows[] = {
        {"5e-11", Diagonal({1.0, 5e-11, 1.0}), false},
        {"2e-10", Diagonal({1.0, 2e-10, 1.0}), true},
        {"1e-10 is not below 1e-10", Diagonal({1e-10}), true},
        {"5e-11 of six rows", Diagonal({1.0, 5e-11, 1.0, 1.0, 1.0, 1.0}), false},
        {"-2e-10 of six rows", Diagonal({1.0, -2e-10, 1.0, 1.0, 1.0, 1.0}), true},
        {"5e-11 of an eliminated matrix", nine({1.0, 5e-11}), false},
        {"-2e-10 of an eliminated matrix", nine({1.0, -2e-10}), true},
        {"the determinant overflows", Diagonal({1e80, 1e80, 1e80, 1e80, 1e80}), false},
        {"only on the way", nine({1e200, 1e200, 1e-200, 1e-200}), true},
        {"a minor of the expansion vanishes", Diagonal({1e200, 1e200, 1e-200, 1e-200, 1.0}), false},
        {"not finite", Diagonal({1.0, kInfinity, 1.0}), false},
        {"not a number", Diagonal({1.0, kNan, 1.0, 1.0, 1.0}), false},
        {"not square", MatrixNM(2, 3), false},
        {"empty", MatrixNM(), false},
    };
    for (const auto& [why, matrix, expected] : rows) {
        SCOPED_TRACE(why);
        MatrixNM inverse = Diagonal({7.0});
        EXPECT_EQ(matrix.GetInverse(inverse), expected);
        EXPECT_TRUE(expected ? AreNear(matrix * inverse, Identity(matrix.GetNumRows()), 1e-15)
                             : inverse == Diagonal({7.0}));
    }
    double determinant = 7.0;
    EXPECT_FALSE(MatrixNM(2, 3).Determinant(determinant) || MatrixNM().Determinant(determinant));
    MatrixNM from(2, 3);
    EXPECT_EQ(MatrixNM(std::move(from)).GetNumRows(), 2U);
    EXPECT_EQ(from.GetNumRows() + from.GetNumCols(), 0U) << "moved from";  // NOLINT(bugprone-use-after-move)
    MatrixNM cofactors;
    ASSERT_TRUE(Diagonal({0.0}).CoFactor(cofactors) && cofactors[0][0] == 1.0);
    MatrixNM jagged(3, 3);
    jagged[1].SetDimension(2);
    EXPECT_FALSE(jagged.Determinant(determinant) || jagged.CoFactor(jagged) || jagged.GetInverse(jagged));
    EXPECT_EQ((jagged * Random(3, 3)).GetNumRows() + (jagged * VecND(3U)).GetDimension(), 0U);
    EXPECT_EQ(jagged.GetTranspose().GetNumRows(), 0U);
    EXPECT_EQ(determinant, 7.0) << "untouched by the failures";
}

TEST_F(MatrixNMTest, DecompositionsRebuildAndSolve) {
    for (const unsigned int n : {1U, 2U, 5U, 20U}) {
        const MatrixNM root = Random(n, n);
        MatrixNM m = root * root.GetTranspose();
        for (unsigned int i = 0; i < n; ++i) m[i][static_cast<int>(i)] += 1.0;
        const VecND expected = Random(1, n)[0];
        const VecND b = m * expected;
        for (const Method method : {Method::Crout, Method::Doolittle, Method::Cholesky}) {
            MatrixNM l, u;
            ASSERT_TRUE(m.LUDecomposition(l, u, method));
            EXPECT_TRUE(AreNear(l * u, m, 1e-13));
            for (unsigned int i = 0; i < n; ++i) {
                const int d = static_cast<int>(i);
                EXPECT_EQ(method == Method::Crout ? u[i][d] : method == Method::Doolittle ? l[i][d] : 1.0, 1.0);
                for (int j = 0; j < static_cast<int>(n); ++j) EXPECT_EQ(j > d ? l[i][j] : j < d ? u[i][j] : 0.0, 0.0);
            }
            VecND x;
            ASSERT_TRUE(m.SolveLinearSystem(b, x, method));
            EXPECT_TRUE(x.IsEqualTo(expected, 1e-12));
        }
    }
    const std::tuple<const char*, MatrixNM, Method, bool, bool> rows[] = {
        {"no such method", Diagonal({1, 1}), static_cast<Method>(3), false, false},
        {"no pivoting", From({{0, 1}, {1, 0}}), Method::Doolittle, false, false},
        {"a small pivot that divides", Diagonal({9e-11, 1}), Method::Doolittle, false, false},
        {"the last pivot divides in the solution only", Diagonal({1, 9e-11}), Method::Doolittle, true, false},
        {"large enough", Diagonal({1e-10, 1}), Method::Crout, true, true},
        {"negative pivot", From({{1, 2}, {2, 1}}), Method::Cholesky, false, false},
        {"pivot lost in rounding", From({{2, 1, 0}, {1, 0.5, 0}, {0, 0, 1}}), Method::Cholesky, false, false},
        {"last pivot lost in rounding", From({{2, 1}, {1, 0.5}}), Method::Cholesky, true, false},
        {"not symmetric", From({{4, 1}, {2, 4}}), Method::Cholesky, false, false},
        {"not finite", Diagonal({1, kNan}), Method::Doolittle, false, false},
    };
    for (const auto& [why, matrix, method, decomposes, solves] : rows) {
        SCOPED_TRACE(why);
        MatrixNM l, u;
        VecND x(9U);
        EXPECT_EQ(matrix.LUDecomposition(l, u, method), decomposes);
        EXPECT_EQ(matrix.SolveLinearSystem(VecND(2U), x, method), solves);
        EXPECT_EQ(x.GetDimension(), solves ? 2U : 9U);
        EXPECT_FALSE(matrix.SolveLinearSystem(VecND(4U), x, method)) << "b of another size";
    }
}

TEST_F(MatrixNMTest, ProductsAndTheTextForm) {
    const MatrixNM m = From({{1, 2, 3}, {4, 5, 6}});
    EXPECT_TRUE(m * m.GetTranspose() == From({{14, 32}, {32, 77}}));
    EXPECT_EQ((m * VecND({1, 0, -1})).GetCoordinates(), (std::vector<double>{-2, -2}));
    EXPECT_EQ((m * m).GetNumRows(), 0U) << "sizes do not match";
    const std::string path = testing::TempDir() + "kalvio_matrix.txt";
    ASSERT_TRUE(From({{1, -2.5}, {1e-7, 1e6}}).DumpToFile(path));
    std::ifstream file(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "1.000000 -2.500000 \n0.000000 1000000.000000 \n");
    std::remove(path.c_str());
    EXPECT_FALSE(m.DumpToFile(testing::TempDir()));
}

}  // namespace
}  // namespace Kalvio::Math
