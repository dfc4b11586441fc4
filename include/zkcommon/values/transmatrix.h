// ZkTransMatrix, the 2-D affine matrix of layout and images, and ZkPointT, a point of floats,
// doubles or lengths.
#ifndef ZKCOMMON_VALUES_TRANSMATRIX_H
#define ZKCOMMON_VALUES_TRANSMATRIX_H

#include "zkcommon/core/export.h"
#include "zkcommon/values/length.h"

namespace ZkCommonNS {

/// A pair x, y of T (float, double or ZkLength).
template <class T> struct ZkPointT {
    T x;
    T y;
    ZkPointT() : x(), y() {}
    ZkPointT(T px, T py) : x(px), y(py) {}
    bool operator==(const ZkPointT& other) const { return x == other.x && y == other.y; }
    bool operator!=(const ZkPointT& other) const { return !(*this == other); }
};

/// Six floats a, b, c, d, e, f: a point (x, y) maps to (a x + c y + e, b x + d y + f). Products
/// follow that row-vector reading: in m1 * m2, m1 applies first. Nothing here fails loudly: a
/// singular matrix inverts to the identity and reports false.
class ZKCOMMON_API ZkTransMatrix {
public:
    /// The identity.
    ZkTransMatrix() noexcept { init(); }
    ZkTransMatrix(float a, float b, float c, float d) noexcept
        : m_a(a), m_b(b), m_c(c), m_d(d), m_e(0.0f), m_f(0.0f) {}
    ZkTransMatrix(float a, float b, float c, float d, float e, float f) noexcept
        : m_a(a), m_b(b), m_c(c), m_d(d), m_e(e), m_f(f) {}

    void init() noexcept;
    /// All six floats 0.
    void zero() noexcept;

    float getA() const noexcept { return m_a; }
    float getB() const noexcept { return m_b; }
    float getC() const noexcept { return m_c; }
    float getD() const noexcept { return m_d; }
    float getE() const noexcept { return m_e; }
    float getF() const noexcept { return m_f; }

    /// This becomes m * this: `m` applies before this matrix.
    ZkTransMatrix& mulLeft(const ZkTransMatrix& m) noexcept;
    /// This becomes this * m: `m` applies after this matrix.
    ZkTransMatrix& mulRight(const ZkTransMatrix& m) noexcept;
    ZkTransMatrix operator*(const ZkTransMatrix& m) const noexcept;
    bool operator==(const ZkTransMatrix& m) const noexcept;
    bool operator!=(const ZkTransMatrix& m) const noexcept { return !(*this == m); }

    /// The mapped point, in float.
    ZkPointT<float> translate(float x, float y) const noexcept;
    ZkPointT<float> translate(const ZkPointT<float>& p) const noexcept {
        return translate(p.x, p.y);
    }
    ZkPointT<float> translate(ZkLength x, ZkLength y) const noexcept {
        return translate(x.getPoints(), y.getPoints());
    }
    ZkPointT<float> translate(const ZkPointT<ZkLength>& p) const noexcept {
        return translate(p.x.getPoints(), p.y.getPoints());
    }
    /// The mapped point, computed in double.
    ZkPointT<double> translateD(double x, double y) const noexcept;

    /// Inverts in place; a singular matrix becomes the identity and gives false.
    bool inverse() noexcept;
    /// The inverse as a new matrix (the identity for a singular one).
    ZkTransMatrix reverse() const noexcept;

    /// The angle of the image of the x axis, atan2(b, a).
    float getAngleX() const noexcept;
    /// The angle of the image of the y axis, atan2(d, c).
    float getAngleY() const noexcept;
    /// The y axis turns clockwise of the x axis: the matrix mirrors.
    bool isMirror() const noexcept;
    /// The determinant is not almost zero.
    bool isRegularMatrix() const noexcept;
    /// a and d within `tol` of 1, b and c within `tol` of 0, and, unless ignored, e and f too.
    bool isUnitMatrix(float tol, bool ignoreTranslation) const noexcept;

private:
    float m_a, m_b, m_c, m_d, m_e, m_f;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_VALUES_TRANSMATRIX_H
