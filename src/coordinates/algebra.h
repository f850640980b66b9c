#ifndef COORDINATES_ALGEBRA_H
#define COORDINATES_ALGEBRA_H

// Double-precision 3-vectors and 3x3 matrices for attitude and frame work. Matrices are stored
// by columns: element (row r, column c) is m[3c + r], so the columns are consecutive vectors.

struct SVec {
    double v[3] = {0.0, 0.0, 0.0};

    SVec() = default;
    SVec(double x, double y, double z) : v{x, y, z} {}
    // Reads three values; the float form widens them.
    explicit SVec(double const* xyz) : v{xyz[0], xyz[1], xyz[2]} {}
    explicit SVec(float const* xyz) : v{xyz[0], xyz[1], xyz[2]} {}

    double& operator[](int i) { return v[i]; }
    double operator[](int i) const { return v[i]; }
};

// The cross-product matrix of the vector (a, b, c): S * w = (a, b, c) x w.
struct SkewSymMatr {
    double a = 0.0;
    double b = 0.0;
    double c = 0.0;
};

// The diagonal of a diagonal matrix.
struct SDiagMatr {
    double d[3] = {0.0, 0.0, 0.0};
};

// value * I.
struct SScalarMatr {
    double value = 0.0;
};

struct SMat {
    double m[9] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};

    // The zero matrix.
    SMat() = default;
    SMat(SVec const& column0, SVec const& column1, SVec const& column2);
    explicit SMat(SkewSymMatr const& s);
    static SMat identity();

    SVec column(int c) const;
    SVec row(int r) const;

    // m[3i + j]: the first index is the column. An index outside 0 to 2 gives m[0], silently.
    double& MAT(int i, int j);
    double MAT(int i, int j) const;

    SMat& operator+=(SkewSymMatr const& s);
    SMat& operator-=(SkewSymMatr const& s);

    // Inverts in place by Gauss-Jordan elimination with pivot search. Only an exact zero pivot
    // counts as singular: then it returns false and the matrix is left half eliminated.
    bool inverse();
    // Brings a nearly orthogonal matrix back to orthogonal by at most four Newton steps.
    // Returns false, leaving the matrix as it was, if they don't get within 1e-12 of it.
    bool normalize();
};

// A rotation matrix.
struct OrthoMat : SMat {
    OrthoMat() : SMat(identity()) {}
    explicit OrthoMat(SMat const& rotation) : SMat(rotation) {}

    // Degrees. Roll is not a number at a pitch of +-90 degrees.
    void PitchRollHeading(double& pitch, double& roll, double& heading) const;
};

SVec operator*(double s, SVec const& v);
SVec operator/(SVec const& v, double s);
SVec operator+(SVec const& a, SVec const& b);
SVec operator-(SVec const& a, SVec const& b);
// By component, the pointer read as three values; the float forms widen first.
SVec operator-(double const* a, SVec const& b);
SVec operator-(float const* a, SVec const& b);
SVec operator-(SVec const& a, double const* b);
SVec operator-(SVec const& a, float const* b);
SVec operator+(double const* a, SVec const& b);
SVec operator+(SVec const& a, double const* b);

double innerprod(SVec const& a, SVec const& b);
double norm(SVec const& v);
double dist(SVec const& a, SVec const& b);
// a x b.
SVec vectorProd(SVec const& a, SVec const& b);
// x * y^T.
SMat outerprod(SVec const& x, SVec const& y);
// By component.
SVec multiply(SVec const& a, SVec const& b);
SVec square(SVec const& v);
SVec square(double const* v);
// Copies the three components to out.
void assign(double* out, SVec const& v);
double max3(double a, double b, double c);

SMat operator*(double s, SMat const& m);
SMat operator+(SMat const& a, SMat const& b);
SMat operator-(SMat const& a, SMat const& b);
SMat operator*(SMat const& a, SMat const& b);
SVec operator*(SMat const& m, SVec const& v);
SMat operator+(SMat const& m, SScalarMatr s);
SMat transpose(SMat const& m);
// The nine doubles in memory order: a row-wise C array read into column storage is its
// transpose.
SMat transpose(double const (*rows)[3]);

SDiagMatr operator*(double s, SDiagMatr const& d);
SDiagMatr operator*(SDiagMatr const& d, double s);
// Column c scaled by d[c].
SMat operator*(SMat const& m, SDiagMatr const& d);
// Row r scaled by d[r].
SMat operator*(SDiagMatr const& d, SMat const& m);
// d taken off the diagonal.
SMat operator-(SMat const& m, SDiagMatr const& d);

SVec operator*(SkewSymMatr const& s, SVec const& v);
SkewSymMatr operator*(double k, SkewSymMatr const& s);
SkewSymMatr operator*(SkewSymMatr const& s, double k);
SkewSymMatr operator+(SkewSymMatr const& s, SkewSymMatr const& t);
SkewSymMatr operator-(SkewSymMatr const& s, SkewSymMatr const& t);
SMat operator*(SkewSymMatr const& s, SMat const& m);
SMat operator*(SMat const& m, SkewSymMatr const& s);
SMat operator*(SkewSymMatr const& s, SkewSymMatr const& t);
SMat operator+(SkewSymMatr const& s, SMat const& m);
SMat operator-(SMat const& m, SkewSymMatr const& s);

// Rotation by angle (radians) about a unit axis, right-handed.
OrthoMat rotationFromAxisAngle(SVec const& axis, double angle);
// Rotation about v by the angle |v| (radians); the identity below 1e-11.
OrthoMat rotationFromVector(SVec const& v);

#endif
