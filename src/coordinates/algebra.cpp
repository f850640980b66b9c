#include "coordinates/algebra.h"

#include <cmath>

namespace {

SVec skewVector(SkewSymMatr const& s) {
    return {s.a, s.b, s.c};
}

int storageIndex(int i, int j) {
    bool const inRange = i >= 0 && i < 3 && j >= 0 && j < 3;
    return inRange ? 3 * i + j : 0;
}

double toDegrees(double radians) {
    return (radians * 180.0) / 3.141592653589793;
}

double greatestAbsolute(SMat const& e) {
    return max3(max3(std::fabs(e.m[0]), std::fabs(e.m[1]), std::fabs(e.m[2])),
                max3(std::fabs(e.m[3]), std::fabs(e.m[4]), std::fabs(e.m[5])),
                max3(std::fabs(e.m[6]), std::fabs(e.m[7]), std::fabs(e.m[8])));
}

} // namespace

SMat::SMat(SVec const& column0, SVec const& column1, SVec const& column2)
    : m{column0[0], column0[1], column0[2], column1[0], column1[1],
        column1[2], column2[0], column2[1], column2[2]} {}

SMat::SMat(SkewSymMatr const& s) {
    *this += s;
}

SMat SMat::identity() {
    return SMat({1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0});
}

SVec SMat::column(int c) const {
    return {m[3 * c], m[3 * c + 1], m[3 * c + 2]};
}

SVec SMat::row(int r) const {
    return {m[r], m[3 + r], m[6 + r]};
}

double& SMat::MAT(int i, int j) {
    return m[storageIndex(i, j)];
}

double SMat::MAT(int i, int j) const {
    return m[storageIndex(i, j)];
}

SMat& SMat::operator+=(SkewSymMatr const& s) {
    m[1] += s.c;
    m[2] -= s.b;
    m[3] -= s.c;
    m[5] += s.a;
    m[6] += s.b;
    m[7] -= s.a;
    return *this;
}

SMat& SMat::operator-=(SkewSymMatr const& s) {
    m[1] -= s.c;
    m[2] += s.b;
    m[3] += s.c;
    m[5] -= s.a;
    m[6] -= s.b;
    m[7] += s.a;
    return *this;
}

bool SMat::inverse() {
    SMat work = identity();
    for (int k = 0; k < 3; ++k) {
        // The last of equally large candidates becomes the pivot.
        int pivot = k;
        double best = 0.0;
        for (int i = k; i < 3; ++i) {
            if (!(std::fabs(MAT(i, k)) < best)) {
                pivot = i;
                best = std::fabs(MAT(i, k));
            }
        }
        if (best == 0.0)
            return false;

        double const p = MAT(pivot, k);
        for (int j = 0; j < 3; ++j) {
            double const oldA = MAT(k, j);
            double const oldW = work.MAT(k, j);
            MAT(k, j) = MAT(pivot, j) / p;
            work.MAT(k, j) = work.MAT(pivot, j) / p;
            if (pivot != k) {
                MAT(pivot, j) = oldA;
                work.MAT(pivot, j) = oldW;
            }
        }
        for (int i = 0; i < 3; ++i) {
            if (i == k)
                continue;
            double const f = MAT(i, k);
            for (int j = 0; j < 3; ++j) {
                MAT(i, j) -= f * MAT(k, j);
                work.MAT(i, j) -= f * work.MAT(k, j);
            }
        }
    }
    *this = work;
    return true;
}

bool SMat::normalize() {
    SMat work = *this;
    for (int step = 0; step < 4; ++step) {
        SMat const e = identity() - transpose(work) * work;
        if (greatestAbsolute(e) < 1e-12) {
            *this = work;
            return true;
        }
        work = work + (0.5 * work) * e;
    }
    return false;
}

void OrthoMat::PitchRollHeading(double& pitch, double& roll, double& heading) const {
    pitch = -toDegrees(std::asin(m[6]));
    roll = toDegrees(std::asin(m[7] / std::sqrt(1 - m[6] * m[6])));
    heading = toDegrees(std::atan2(m[3], m[0]));
}

SVec operator*(double s, SVec const& v) {
    return {s * v[0], s * v[1], s * v[2]};
}
SVec operator/(SVec const& v, double s) {
    return {v[0] / s, v[1] / s, v[2] / s};
}
SVec operator+(SVec const& a, SVec const& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
SVec operator-(SVec const& a, SVec const& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
SVec operator-(double const* a, SVec const& b) {
    return SVec(a) - b;
}
SVec operator-(float const* a, SVec const& b) {
    return SVec(a) - b;
}
SVec operator-(SVec const& a, double const* b) {
    return a - SVec(b);
}
SVec operator-(SVec const& a, float const* b) {
    return a - SVec(b);
}
SVec operator+(double const* a, SVec const& b) {
    return SVec(a) + b;
}
SVec operator+(SVec const& a, double const* b) {
    return a + SVec(b);
}

double innerprod(SVec const& a, SVec const& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
double norm(SVec const& v) {
    return std::sqrt(innerprod(v, v));
}
double dist(SVec const& a, SVec const& b) {
    return norm(a - b);
}

SVec vectorProd(SVec const& a, SVec const& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

SMat outerprod(SVec const& x, SVec const& y) {
    return SMat(y[0] * x, y[1] * x, y[2] * x);
}

SVec multiply(SVec const& a, SVec const& b) {
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2]};
}
SVec square(SVec const& v) {
    return multiply(v, v);
}
SVec square(double const* v) {
    return square(SVec(v));
}

void assign(double* out, SVec const& v) {
    out[0] = v[0];
    out[1] = v[1];
    out[2] = v[2];
}

double max3(double a, double b, double c) {
    double const ab = a > b ? a : b;
    return ab > c ? ab : c;
}

SMat operator*(double s, SMat const& m) {
    return SMat(s * m.column(0), s * m.column(1), s * m.column(2));
}

SMat operator+(SMat const& a, SMat const& b) {
    return SMat(a.column(0) + b.column(0), a.column(1) + b.column(1), a.column(2) + b.column(2));
}

SMat operator-(SMat const& a, SMat const& b) {
    return SMat(a.column(0) - b.column(0), a.column(1) - b.column(1), a.column(2) - b.column(2));
}

SMat operator*(SMat const& a, SMat const& b) {
    SMat out;
    for (int c = 0; c < 3; ++c) {
        for (int r = 0; r < 3; ++r) {
            out.m[3 * c + r] =
                a.m[r] * b.m[3 * c] + a.m[3 + r] * b.m[3 * c + 1] + a.m[6 + r] * b.m[3 * c + 2];
        }
    }
    return out;
}

SVec operator*(SMat const& m, SVec const& v) {
    return {innerprod(m.row(0), v), innerprod(m.row(1), v), innerprod(m.row(2), v)};
}

SMat operator+(SMat const& m, SScalarMatr s) {
    SMat out = m;
    out.m[0] += s.value;
    out.m[4] += s.value;
    out.m[8] += s.value;
    return out;
}

SMat transpose(SMat const& m) {
    return SMat(m.row(0), m.row(1), m.row(2));
}

SMat transpose(double const (*rows)[3]) {
    return SMat(SVec(rows[0]), SVec(rows[1]), SVec(rows[2]));
}

SDiagMatr operator*(double s, SDiagMatr const& d) {
    return {{s * d.d[0], s * d.d[1], s * d.d[2]}};
}
SDiagMatr operator*(SDiagMatr const& d, double s) {
    return {{d.d[0] * s, d.d[1] * s, d.d[2] * s}};
}

SMat operator*(SMat const& m, SDiagMatr const& d) {
    return SMat(d.d[0] * m.column(0), d.d[1] * m.column(1), d.d[2] * m.column(2));
}

SMat operator*(SDiagMatr const& d, SMat const& m) {
    SVec const rowScale(d.d);
    return SMat(multiply(rowScale, m.column(0)), multiply(rowScale, m.column(1)),
                multiply(rowScale, m.column(2)));
}

SMat operator-(SMat const& m, SDiagMatr const& d) {
    SMat out = m;
    out.m[0] -= d.d[0];
    out.m[4] -= d.d[1];
    out.m[8] -= d.d[2];
    return out;
}

SVec operator*(SkewSymMatr const& s, SVec const& v) {
    return vectorProd(skewVector(s), v);
}
SkewSymMatr operator*(double k, SkewSymMatr const& s) {
    return {k * s.a, k * s.b, k * s.c};
}
SkewSymMatr operator*(SkewSymMatr const& s, double k) {
    return {s.a * k, s.b * k, s.c * k};
}

SkewSymMatr operator+(SkewSymMatr const& s, SkewSymMatr const& t) {
    return {s.a + t.a, s.b + t.b, s.c + t.c};
}

SkewSymMatr operator-(SkewSymMatr const& s, SkewSymMatr const& t) {
    return {s.a - t.a, s.b - t.b, s.c - t.c};
}

SMat operator*(SkewSymMatr const& s, SMat const& m) {
    return SMat(s * m.column(0), s * m.column(1), s * m.column(2));
}

SMat operator*(SMat const& m, SkewSymMatr const& s) {
    // The columns of S are (0, c, -b), (-c, 0, a) and (b, -a, 0).
    SVec const m0 = m.column(0);
    SVec const m1 = m.column(1);
    SVec const m2 = m.column(2);
    return SMat(s.c * m1 - s.b * m2, s.a * m2 - s.c * m0, s.b * m0 - s.a * m1);
}

SMat operator*(SkewSymMatr const& s, SkewSymMatr const& t) {
    // [s]x [t]x = t s^T - (s . t) I
    double const dot = innerprod(skewVector(s), skewVector(t));
    return outerprod(skewVector(t), skewVector(s)) - SDiagMatr{{dot, dot, dot}};
}

SMat operator+(SkewSymMatr const& s, SMat const& m) {
    SMat out = m;
    out += s;
    return out;
}

SMat operator-(SMat const& m, SkewSymMatr const& s) {
    SMat out = m;
    out -= s;
    return out;
}

OrthoMat rotationFromAxisAngle(SVec const& axis, double angle) {
    double const s = std::sin(angle);
    double const c = std::cos(angle);
    SMat rotation = (1 - c) * outerprod(axis, axis) + SScalarMatr{c};
    rotation += s * SkewSymMatr{axis[0], axis[1], axis[2]};
    return OrthoMat(rotation);
}

OrthoMat rotationFromVector(SVec const& v) {
    double const theta = std::sqrt(innerprod(v, v));
    if (theta < 1e-11)
        return OrthoMat();
    return rotationFromAxisAngle(v / theta, theta);
}
