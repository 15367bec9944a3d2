#pragma once

/**
 * The value scale of a bar graph: fixed limits, or automatic limits that
 * take in every finite value seen since the last reset().
 *
 * Automatic limits always include zero, so bars grow from a common
 * baseline, and are rounded outward to 1, 2 or 5 times a power of ten. They
 * only grow: a scale that shrank back after a peak would make every bar jump
 * with it.
 */
class BarRange
{
public:
    enum class Clip { None, Below, Above };

    /// What the editors accept, and a file is held to: far beyond any
    /// telemetry, and the span stays a finite double.
    static constexpr double Limit = 1e12;

    bool isAutomatic() const { return m_automatic; }
    void setAutomatic(bool on);
    double fixedMin() const { return m_fixedMin; }
    double fixedMax() const { return m_fixedMax; }
    /// Limited to +-Limit; reversed limits are swapped and equal ones widened
    /// by one, so the scale never has an empty span.
    void setFixed(double min, double max);

    /// Forgets the values seen: automatic limits start again from zero.
    void reset();
    /// Widens automatic limits to take in a finite value; cheap when it
    /// changes nothing, since every value the device sends passes here.
    void observe(double value);

    double lower() const { return m_lower; }
    double upper() const { return m_upper; }
    /// Zero, or the limit nearest to it when the scale does not include it.
    double baseline() const;
    /// The value's place on the scale, 0 at lower() and 1 at upper(),
    /// limited to 0..1; NaN stays NaN.
    double position(double value) const;
    Clip clip(double value) const;

    /// The smallest of 1, 2 or 5 times a power of ten that is at least x (x > 0).
    static double niceCeil(double x);

private:
    void updateLimits();

    bool m_automatic = true;
    double m_fixedMin = 0.0;
    double m_fixedMax = 100.0;
    double m_seenMin = 0.0;
    double m_seenMax = 0.0;
    double m_lower = 0.0;
    double m_upper = 1.0;
};
