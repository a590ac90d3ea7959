// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

/// The cosine and sine of an angle that grows by equal steps. Neither function is called for a
/// step: it multiplies cos + i sin of the angle by cos + i sin of the step. The error grows with
/// the number of steps since the last reset, by about one rounding each.
template<class T>
class Oscillator
{
public:
    /// Sets the step angle, in radians, and starts at angle 0.
    void set_step(T angle)
    {
        _step_cos = std::cos(angle);
        _step_sin = std::sin(angle);
        reset();
    }

    /// Goes back to angle 0.
    void reset()
    {
        _cos = T(1);
        _sin = T(0);
    }

    /// Advances by one step.
    void step()
    {
        const T previous = _cos;
        _cos = previous * _step_cos - _sin * _step_sin;
        _sin = previous * _step_sin + _sin * _step_cos;
    }

    T cos() const { return _cos; } ///< cosine of the current angle
    T sin() const { return _sin; } ///< sine of the current angle

private:
    T _cos = T(1);
    T _sin = T(0);
    T _step_cos = T(1);
    T _step_sin = T(0);
};
