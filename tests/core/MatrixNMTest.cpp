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

TEST_F(MatrixNMTest, InverseUndoesLargeSizes) {
    for (unsigned int n = 13; n <= 70; n += 19) {
        MatrixNM m = Random(n, n), inverse;
        for (unsigned int i = 0; i < n; ++i) m[i][static_cast<int>((i * 3 + 1) % n)] += 4.0;  // pivots off the diagonal
        ASSERT_TRUE(m.GetInverse(inverse)) << n;
        EXPECT_TRUE(AreNear(m * inverse, Identity(n), 1e-11)) << n;
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

TEST_F(MatrixNMTest, DecompositionsFailByTheirPivots) {
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
