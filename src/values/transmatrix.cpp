// ZkTransMatrix: products, mapping, inversion by elimination and the shape tests.
#include "zkcommon/values/transmatrix.h"

#include <cmath>
#include <utility>

namespace ZkCommonNS {

namespace {

// A pivot at or below this is taken for zero: the float epsilon.
constexpr double kPivotEpsilon = 1.1920928955078125e-7;

} // namespace

void ZkTransMatrix::init() noexcept {
    m_a = m_d = 1.0f;
    m_b = m_c = m_e = m_f = 0.0f;
}

void ZkTransMatrix::zero() noexcept {
    m_a = m_b = m_c = m_d = m_e = m_f = 0.0f;
}

ZkTransMatrix ZkTransMatrix::operator*(const ZkTransMatrix& m) const noexcept {
    return ZkTransMatrix(m_a * m.m_a + m_b * m.m_c, m_a * m.m_b + m_b * m.m_d,
                         m_c * m.m_a + m_d * m.m_c, m_c * m.m_b + m_d * m.m_d,
                         m_e * m.m_a + m_f * m.m_c + m.m_e, m_e * m.m_b + m_f * m.m_d + m.m_f);
}

ZkTransMatrix& ZkTransMatrix::mulLeft(const ZkTransMatrix& m) noexcept {
    *this = m * *this;
    return *this;
}

ZkTransMatrix& ZkTransMatrix::mulRight(const ZkTransMatrix& m) noexcept {
    *this = *this * m;
    return *this;
}

bool ZkTransMatrix::operator==(const ZkTransMatrix& m) const noexcept {
    return m_a == m.m_a && m_b == m.m_b && m_c == m.m_c && m_d == m.m_d && m_e == m.m_e &&
           m_f == m.m_f;
}

ZkPointT<float> ZkTransMatrix::translate(float x, float y) const noexcept {
    return ZkPointT<float>(m_a * x + m_c * y + m_e, m_b * x + m_d * y + m_f);
}

ZkPointT<double> ZkTransMatrix::translateD(double x, double y) const noexcept {
    return ZkPointT<double>(double(m_a) * x + double(m_c) * y + double(m_e),
                            double(m_b) * x + double(m_d) * y + double(m_f));
}

bool ZkTransMatrix::inverse() noexcept {
    // The linear part [[p, q], [r, s]] by elimination with a checked pivot; when a is too small
    // the two rows are swapped first (a multiplication from the left), and the inverse then has
    // its two columns swapped back.
    double p = double(m_a), q = double(m_b), r = double(m_c), s = double(m_d);
    bool swapped = std::fabs(p) <= kPivotEpsilon;
    if (swapped) {
        std::swap(p, r);
        std::swap(q, s);
    }
    if (std::fabs(p) <= kPivotEpsilon) {
        init();
        return false;
    }
    double l = r / p;
    double pivot2 = s - l * q;
    if (std::fabs(pivot2) <= kPivotEpsilon) {
        init();
        return false;
    }
    // Back substitution of [[p, q], [0, pivot2]] applied to the elimination step.
    double i11 = 1.0 / p + q * l / (p * pivot2);
    double i12 = -q / (p * pivot2);
    double i21 = -l / pivot2;
    double i22 = 1.0 / pivot2;
    if (swapped) { // undo the row swap: swap the columns of the inverse
        std::swap(i11, i12);
        std::swap(i21, i22);
    }
    double e = double(m_e), f = double(m_f);
    m_a = static_cast<float>(i11);
    m_b = static_cast<float>(i12);
    m_c = static_cast<float>(i21);
    m_d = static_cast<float>(i22);
    m_e = static_cast<float>(-(e * i11 + f * i21));
    m_f = static_cast<float>(-(e * i12 + f * i22));
    return true;
}

ZkTransMatrix ZkTransMatrix::reverse() const noexcept {
    ZkTransMatrix m = *this;
    m.inverse();
    return m;
}

float ZkTransMatrix::getAngleX() const noexcept {
    return std::atan2(m_b, m_a);
}

float ZkTransMatrix::getAngleY() const noexcept {
    return std::atan2(m_d, m_c);
}

bool ZkTransMatrix::isMirror() const noexcept {
    float diff = getAngleY() - getAngleX();
    if (diff < 0.0f)
        diff += 6.2831855f;
    return diff >= 3.1415927f;
}

bool ZkTransMatrix::isRegularMatrix() const noexcept {
    double det = double(m_a) * double(m_d) - double(m_b) * double(m_c);
    return std::fabs(det) > kPivotEpsilon;
}

bool ZkTransMatrix::isUnitMatrix(float tol, bool ignoreTranslation) const noexcept {
    auto near = [tol](float x, float target) { return std::fabs(x - target) <= tol; };
    if (!near(m_a, 1.0f) || !near(m_d, 1.0f) || !near(m_b, 0.0f) || !near(m_c, 0.0f))
        return false;
    return ignoreTranslation || (near(m_e, 0.0f) && near(m_f, 0.0f));
}

} // namespace ZkCommonNS
