// The 3x3 algebra by identities that tie its many product forms to one another, and the inverse,
// normalisation and attitude angles by values worked out by hand.
#include "coordinates/algebra.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

double const pi = 3.141592653589793;

void expectNear(SMat const& actual, SMat const& expected, double tolerance = 1e-12) {
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(actual.m[i], expected.m[i], tolerance) << "element " << i;
}
void expectNear(SVec const& actual, SVec const& expected) {
    expectNear(SMat(actual, {}, {}), SMat(expected, {}, {}));
}
bool sameBytes(SMat const& a, SMat const& b) {
    return std::memcmp(a.m, b.m, sizeof a.m) == 0;
}

// A matrix with no special structure, by columns.
SMat const general({2.0, -1.0, 0.5}, {0.3, 4.0, -2.0}, {-1.5, 0.25, 3.0});
SVec const w(0.7, -1.1, 2.3);

} // namespace

TEST(Algebra_products, everyFormAgreesWithColumnStorage) {
    SMat const other({1.0, 2.0, -3.0}, {0.5, 0.0, 1.0}, {-2.0, 1.5, 0.25});
    expectNear((general * other) * w, general * (other * w));
    expectNear(transpose(general * other), transpose(other) * transpose(general));
    expectNear(outerprod(SVec(1, 2, 3), SVec(-2, 0.5, 4)) * w,
               innerprod(SVec(-2, 0.5, 4), w) * SVec(1, 2, 3));
    SDiagMatr const d{{2.0, -3.0, 0.5}};
    expectNear((general * d).column(1), -3.0 * general.column(1));
    expectNear((d * general).row(1), -3.0 * general.row(1));
    expectNear((general - d).column(2), general.column(2) - SVec(0, 0, 0.5));

    // The cross-product matrix of a, alone and in products and sums.
    SkewSymMatr const s{1.5, -2.0, 0.5};
    SkewSymMatr const t{-0.5, 1.0, 3.0};
    SVec const a(1.5, -2.0, 0.5);
    expectNear(s * w, vectorProd(a, w));
    expectNear(SMat(s) * w, vectorProd(a, w));
    expectNear((s * general) * w, vectorProd(a, general * w));
    expectNear((general * s) * w, general * vectorProd(a, w));
    expectNear((s * t) * w, vectorProd(a, vectorProd(SVec(-0.5, 1.0, 3.0), w)));
    expectNear(s + SMat(), SMat(s));
    expectNear(SMat() - s, -1.0 * SMat(s));
    expectNear(SMat(s + 2.0 * t), SMat(s) + SMat(t * 2.0));
    expectNear(SMat(s - t), SMat(s) - SMat(t));

    // Pointers read as three values, floats widened.
    float const f[3] = {1.5f, 2.0f, -0.25f};
    double const p[3] = {0.5, -1.0, 4.0};
    SVec const one(1.0, 1.0, 1.0);
    expectNear(f - one, SVec(0.5, 1.0, -1.25));
    expectNear(one - f, SVec(-0.5, -1.0, 1.25));
    expectNear(p - one, SVec(-0.5, -2.0, 3.0));
    expectNear(one - p + (p + one) - (one + p), SVec(0.5, 2.0, -3.0));
    expectNear(square(p), SVec(0.25, 1.0, 16.0));
    EXPECT_EQ(dist(SVec(1, 2, 3), SVec(4, 6, 15)), 13.0);

    // The first index is the column; one out of range gives the first element.
    SMat m = general;
    EXPECT_EQ(&m.MAT(2, 1), &m.m[7]);
    EXPECT_EQ(&m.MAT(1, -1), &m.m[0]);
    double const rows[3][3] = {{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 9.0}};
    EXPECT_EQ(std::memcmp(transpose(rows).m, rows, sizeof rows), 0);
    expectNear(transpose(rows).row(0), SVec(1.0, 4.0, 7.0));
}

TEST(Algebra_inverse, invertsOrRefusesAndNormalizesOnlyDrift) {
    SMat inverse = general;
    ASSERT_TRUE(inverse.inverse());
    expectNear(inverse * general, SMat::identity());
    // Zeros on the diagonal force a row swap at every step.
    SMat const permutation({0, 0, 1}, {1, 0, 0}, {0, 1, 0});
    inverse = permutation;
    ASSERT_TRUE(inverse.inverse());
    EXPECT_TRUE(sameBytes(inverse, transpose(permutation)));
    // The first pivot candidates tie (-3 and 3). Taking the last of them gives the exact inverse,
    // k / 76, correctly rounded; the first would miss it in the last bit.
    SMat tied({-3, 4, -4}, {-1, -4, 2}, {3, 2, 5});
    ASSERT_TRUE(tied.inverse());
    double const times76[9] = {-24, -28, -8, 11, -3, 10, 10, 18, 16};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(tied.m[i], times76[i] / 76.0) << i;
    // Singular: refused at once, or left half eliminated.
    SMat zero;
    EXPECT_FALSE(zero.inverse());
    EXPECT_TRUE(sameBytes(zero, SMat()));
    SMat const equalColumns({1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}, {0.0, 1.0, 5.0});
    SMat m = equalColumns;
    EXPECT_FALSE(m.inverse());
    EXPECT_FALSE(sameBytes(m, equalColumns));

    SMat rotation = rotationFromAxisAngle(SVec(0.0, 0.6, 0.8), 0.7);
    SMat const before = rotation;
    EXPECT_TRUE(rotation.normalize());
    expectNear(rotation, before, 1e-15);
    SMat drifted = rotationFromAxisAngle(SVec(1.0, 0.0, 0.0), 1.2);
    drifted.m[1] += 1e-4;
    drifted.m[5] -= 2e-4;
    ASSERT_TRUE(drifted.normalize());
    expectNear(transpose(drifted) * drifted, SMat::identity());
    SMat const triple = 3.0 * SMat::identity();
    m = triple;
    EXPECT_FALSE(m.normalize());
    EXPECT_TRUE(sameBytes(m, triple));
}

TEST(Algebra_rotation, rotationsAreRightHandedAndGiveTheirAttitudeBack) {
    OrthoMat const quarterTurn = rotationFromVector(SVec(0.0, 0.0, pi / 2));
    expectNear(quarterTurn * SVec(1.0, 0.0, 2.0), SVec(0.0, 1.0, 2.0));
    SVec const axis = SVec(1.0, -2.0, 2.0) / 3.0;
    OrthoMat const r = rotationFromAxisAngle(axis, 0.9);
    expectNear(transpose(r) * r, SMat::identity());
    expectNear(rotationFromVector(0.9 * axis), r);
    EXPECT_TRUE(sameBytes(rotationFromVector(SVec()), SMat::identity()));

    // Body to north-east-down: heading about down, then pitch about east, then roll about north.
    SMat const bodyToLocal = rotationFromAxisAngle(SVec(0, 0, 1), 130.0 * pi / 180) *
                             rotationFromAxisAngle(SVec(0, 1, 0), 10.0 * pi / 180) *
                             rotationFromAxisAngle(SVec(1, 0, 0), -25.0 * pi / 180);
    double pitch = 0.0;
    double roll = 0.0;
    double heading = 0.0;
    OrthoMat(transpose(bodyToLocal)).PitchRollHeading(pitch, roll, heading);
    EXPECT_NEAR(pitch, 10.0, 1e-12);
    EXPECT_NEAR(roll, -25.0, 1e-12);
    EXPECT_NEAR(heading, 130.0, 1e-12);
    // Straight up, the roll is undefined.
    OrthoMat(transpose(rotationFromAxisAngle(SVec(0, 1, 0), pi / 2)))
        .PitchRollHeading(pitch, roll, heading);
    EXPECT_NEAR(pitch, 90.0, 1e-12);
    EXPECT_TRUE(std::isnan(roll));
}
