#pragma once

#include "fluid/components/component_set.hpp"

namespace kvr {

/// Vapour fraction V of  g(V) = sum z_i (K_i - 1)/(1 + V (K_i - 1)) = 0  (Rachford and Rice 1952), by Newton
/// held between bounds. 0 where g(0) <= 0, 1 where g(1) >= 0: one phase.
double vapourFraction(int count, const Composition& z, const Composition& K, double start);

/// The same between the outermost poles of g, where both compositions are positive, so that V may lie outside
/// 0..1 (negative flash, Whitson and Michelsen 1989). False where the K do not lie on both sides of 1.
bool negativeFlash(int count, const Composition& z, const Composition& K, double& V);

/// x_i = z_i/(1 + V (K_i - 1)), y_i = K_i x_i.
void splitFeed(int count, const Composition& z, const Composition& K, double V, Composition& x,
               Composition& y);

}  // namespace kvr
