"""Phase equilibrium of the Peng-Robinson equation of state (Peng and Robinson 1976) in forty digits: written from the
equations, plain and slow. Phases are found by successive substitution from many trials in double precision, the
split is then solved by Newton in mpmath."""

import mpmath
import numpy

GAS_CONSTANT = 10.73159  # psia ft3 / (lb-mole R)
OMEGA_A, OMEGA_B = 0.457235529, 0.077796074
DIGITS = 40
ROOT_TWO = 2.0 ** 0.5
STATIONARY = 1e-11   # change of ln W of a trial that has arrived
FEED_AGAIN = 1e-4    # |ln W - ln z| of a trial that came back to the feed
STEPS = 3000


class Mixture:
    """Components at one temperature: attraction of each pair and co-volumes, in doubles and in many digits."""

    def __init__(self, tc, pc, acentric, bic, temperature):
        self.tc, self.pc, self.acentric = map(numpy.array, (tc, pc, acentric))
        self.temperature = temperature
        self.count = len(tc)
        with mpmath.workdps(DIGITS):
            r, t = mpmath.mpf(GAS_CONSTANT), mpmath.mpf(temperature)
            a, self.b_exact = [], []
            for c, p, w in zip(tc, pc, acentric):
                c, p, w = mpmath.mpf(c), mpmath.mpf(p), mpmath.mpf(w)
                m = mpmath.mpf("0.37464") + mpmath.mpf("1.54226") * w - mpmath.mpf("0.26992") * w * w
                alpha = (1 + m * (1 - mpmath.sqrt(t / c))) ** 2
                a.append(mpmath.mpf(OMEGA_A) * r * r * c * c / p * alpha)
                self.b_exact.append(mpmath.mpf(OMEGA_B) * r * c / p)
            self.a_exact = [[(1 - mpmath.mpf(float(bic[i][j]))) * mpmath.sqrt(a[i] * a[j]) for j in range(self.count)]
                            for i in range(self.count)]
        self.a = numpy.array(self.a_exact, dtype=float)
        self.b = numpy.array(self.b_exact, dtype=float)

    def ln_phi(self, x, pressure):
        """ln of the fugacity coefficients of compositions (rows), each at its root of least Gibbs energy."""
        rt = GAS_CONSTANT * self.temperature
        ax = x @ self.a
        a_mix, b_mix = (ax * x).sum(axis=1), x @ self.b
        A, B = a_mix * pressure / rt**2, b_mix * pressure / rt
        best = None
        for z in cubic_roots(A, B):
            usable = z > B * (1 + 1e-12)
            z = numpy.where(usable, z, B * 2)
            log = numpy.log((z + (1 + ROOT_TWO) * B) / (z + (1 - ROOT_TWO) * B))
            gibbs = numpy.where(usable, z - 1 - numpy.log(z - B) - A / (2 * ROOT_TWO * B) * log, numpy.inf)
            ratio = self.b / b_mix[:, None]
            values = ((z - 1)[:, None] * ratio - numpy.log(z - B)[:, None] - (A / (2 * ROOT_TWO * B) * log)[:, None]
                      * (2 * ax / a_mix[:, None] - ratio))
            if best is None:
                best, least = values, gibbs
            else:
                best = numpy.where((gibbs < least)[:, None], values, best)
                least = numpy.minimum(gibbs, least)
        return best

    def ln_phi_exact(self, x, pressure, wanted=None):
        """(ln phi, Z) of one composition in many digits, at the root of least Gibbs energy."""
        n = self.count
        rt = mpmath.mpf(GAS_CONSTANT) * mpmath.mpf(self.temperature)
        ax = [mpmath.fdot(x, row) for row in self.a_exact]
        a_mix, b_mix = mpmath.fdot(x, ax), mpmath.fdot(x, self.b_exact)
        A, B = a_mix * pressure / rt**2, b_mix * pressure / rt
        roots = [r.real for r in mpmath.polyroots([1, B - 1, A - 2 * B - 3 * B * B, -(A - B - B * B) * B],
                                                  maxsteps=500, extraprec=200)
                 if abs(r.imag) < mpmath.mpf(10) ** (-DIGITS // 3) and r.real > B]
        s = mpmath.sqrt(2)

        def gibbs(z):
            return z - 1 - mpmath.log(z - B) - A / (2 * s * B) * mpmath.log((z + (1 + s) * B) / (z + (1 - s) * B))

        z = min(roots, key=gibbs)
        log = mpmath.log((z + (1 + s) * B) / (z + (1 - s) * B))
        return [(z - 1) * self.b_exact[i] / b_mix - mpmath.log(z - B) - A / (2 * s * B) * log
                * (2 * ax[i] / a_mix - self.b_exact[i] / b_mix) for i in range(n)], z

    def wilson(self, pressure):
        return 5.37 * (1 + self.acentric) * (1 - self.tc / self.temperature) + numpy.log(self.pc / pressure)


def cubic_roots(A, B):
    """The three roots of each cubic, not a number where there is none, polished by Newton."""
    c2, c1, c0 = B - 1, A - 2 * B - 3 * B * B, -(A - B - B * B) * B
    p, q = c1 / 3 - c2**2 / 9, c2**3 / 27 - c1 * c2 / 6 + c0 / 2
    d = p**3 + q**2
    found = []
    with numpy.errstate(invalid="ignore", divide="ignore"):
        u = -numpy.sign(q) * numpy.cbrt(numpy.abs(q) + numpy.sqrt(numpy.maximum(d, 0)))
        single = numpy.where(u == 0, 0, u - p / u)
        size = numpy.sqrt(numpy.maximum(-p, 0))
        angle = numpy.arccos(numpy.clip(-q / numpy.maximum(size**3, 1e-300), -1, 1))
        for k in range(3):
            z = numpy.where(d > 0, single if k == 0 else numpy.nan, 2 * size * numpy.cos((angle - 2 * numpy.pi * k) / 3)) - c2 / 3
            for _ in range(4):
                slope = (3 * z + 2 * c2) * z + c1
                step = (((z + c2) * z + c1) * z + c0) / slope
                z = numpy.where(numpy.isfinite(step) & (numpy.abs(step) < 1e-3), z - step, z)
            found.append(z)
    return found


def stationary_points(mixture, feed, pressure):
    """[(tm, composition)] of the stationary points of the tangent plane distance that many trials lead to."""
    n = mixture.count
    lnz = numpy.log(feed)
    d = lnz + mixture.ln_phi(feed[None, :], pressure)[0]
    lnk = mixture.wilson(pressure)
    trials = [lnz + f * lnk for f in (1, -1, 1 / 3, -1 / 3, 0.1, -0.1)]
    trials += [numpy.log(numpy.where(numpy.arange(n) == i, 0.98, 0.02 * feed)) for i in range(n)]
    lnw = numpy.array(trials)
    arrived = numpy.zeros(len(trials), dtype=bool)
    for _ in range(STEPS):
        w = numpy.exp(lnw[~arrived])
        new = d - mixture.ln_phi(w / w.sum(axis=1, keepdims=True), pressure)
        change = numpy.abs(new - lnw[~arrived]).max(axis=1)
        back = numpy.abs(new - lnz).max(axis=1) < FEED_AGAIN
        lnw[~arrived] = new
        arrived[~arrived] = (change < STATIONARY) | back
        if arrived.all():
            break
    points = []
    for row in lnw:
        w = numpy.exp(row)
        if numpy.abs(row - lnz).max() < 100 * FEED_AGAIN and numpy.abs(1 - w.sum()) < 1e-6:
            continue
        points.append((1 - w.sum(), w / w.sum()))
    return sorted(points, key=lambda point: point[0])


def rachford_rice(feed, K):
    """Vapour fraction by bisection and Newton, between the poles."""
    low, high = 1 / (1 - K.max()), 1 / (1 - K.min())
    V = 0.5 * (low + high) if not low < 0.5 < high else 0.5
    for _ in range(200):
        terms = (K - 1) / (1 + V * (K - 1))
        g, slope = (feed * terms).sum(), -(feed * terms**2).sum()
        low, high = (V, high) if g > 0 else (low, V)
        new = V - g / slope
        if abs(new - V) < 1e-15 * max(1, abs(V)):
            return V
        V = new if low < new < high else 0.5 * (low + high)
    return V


def split_residual(mixture, feed, lnk, V, pressure):
    x = [z / (1 + V * (mpmath.exp(k) - 1)) for z, k in zip(feed, lnk)]
    y = [mpmath.exp(k) * xi for k, xi in zip(lnk, x)]
    sx, sy = mpmath.fsum(x), mpmath.fsum(y)
    liquid, zl = mixture.ln_phi_exact([v / sx for v in x], pressure)
    vapour, zv = mixture.ln_phi_exact([v / sy for v in y], pressure)
    residual = [k - a + b for k, a, b in zip(lnk, liquid, vapour)] + [sy - sx]
    return residual, x, y, zl, zv


def double_residual(mixture, feed, unknown, pressure):
    lnk, V = unknown[:-1], unknown[-1]
    x = feed / (1 + V * (numpy.exp(lnk) - 1))
    y = numpy.exp(lnk) * x
    phi = mixture.ln_phi(numpy.array([x / x.sum(), y / y.sum()]), pressure)
    return numpy.append(lnk - phi[0] + phi[1], y.sum() - x.sum())


def double_jacobian(mixture, feed, unknown, pressure):
    size = len(unknown)
    J = numpy.empty((size, size))
    for j in range(size):
        step = 1e-6
        up, down = unknown.copy(), unknown.copy()
        up[j] += step
        down[j] -= step
        J[:, j] = (double_residual(mixture, feed, up, pressure) - double_residual(mixture, feed, down, pressure)) / (2 * step)
    return J


def polished(mixture, feed, lnk, V, pressure):
    """The split in many digits, None where Newton does not get there."""
    with mpmath.workdps(DIGITS):
        exact_feed = [mpmath.mpf(float(z)) for z in feed]
        total = mpmath.fsum(exact_feed)
        exact_feed = [z / total for z in exact_feed]
        pressure = mpmath.mpf(float(pressure))
        unknown = [mpmath.mpf(float(k)) for k in lnk] + [mpmath.mpf(float(V))]
        for _ in range(60):
            residual, x, y, zl, zv = split_residual(mixture, exact_feed, unknown[:-1], unknown[-1], pressure)
            worst = max(abs(r) for r in residual)
            if worst < mpmath.mpf(10) ** -22:
                return dict(V=unknown[-1], x=x, y=y, zl=zl, zv=zv)
            start = numpy.array([float(u) for u in unknown])
            J = double_jacobian(mixture, feed, start, float(pressure))
            try:
                change = numpy.linalg.solve(J, numpy.array([float(r / worst) for r in residual]))
            except numpy.linalg.LinAlgError:
                return None
            if not numpy.isfinite(change).all():
                return None
            unknown = [u - worst * mpmath.mpf(float(c)) for u, c in zip(unknown, change)]
    return None


def split_from(mixture, feed, pressure, second):
    """Two phases of an unstable feed by substitution from a composition below the tangent plane."""
    share = 0.5 * min(1.0, (feed / second).min())
    first = (feed - share * second) / (1 - share)
    lnk = numpy.log(second / first)
    for _ in range(STEPS):
        K = numpy.exp(lnk)
        if not (K.max() > 1 > K.min()):
            return None
        V = min(max(rachford_rice(feed, K), 1e-12), 1 - 1e-12)
        x = feed / (1 + V * (K - 1))
        y = K * x
        phi = mixture.ln_phi(numpy.array([x / x.sum(), y / y.sum()]), pressure)
        new = phi[0] - phi[1]
        change = numpy.abs(new - lnk).max()
        lnk = new
        if change < 1e-10:
            break
    return lnk, rachford_rice(feed, numpy.exp(lnk))


def flash(mixture, feed, pressure):
    """(tm, split): the lowest tangent plane distance of the feed, and its split in many digits where that is below 0.
    The split is None where the feed is stable, "third" where one of two phases would itself split, "unsolved" where
    the search ended without one."""
    points = stationary_points(mixture, feed, pressure)
    if not points or points[0][0] >= 0:
        return (points[0][0] if points else 1.0), None
    start = split_from(mixture, feed, pressure, points[0][1])
    if start is None:
        return points[0][0], "unsolved"
    result = polished(mixture, feed, *start, pressure)
    if result is None or not 0 < result["V"] < 1:
        return points[0][0], "unsolved"
    x = numpy.array([float(v) for v in result["x"]])
    again = stationary_points(mixture, x / x.sum(), pressure)
    if again and again[0][0] < -1e-8:
        return points[0][0], "third"
    return points[0][0], result


def fugacity_gap(mixture, x, y, pressure):
    """Largest |ln f_L - ln f_V| of given phases, in many digits."""
    with mpmath.workdps(DIGITS):
        x, y = [mpmath.mpf(float(v)) for v in x], [mpmath.mpf(float(v)) for v in y]
        liquid, _ = mixture.ln_phi_exact(x, mpmath.mpf(float(pressure)))
        vapour, _ = mixture.ln_phi_exact(y, mpmath.mpf(float(pressure)))
        return float(max(abs(mpmath.log(a) + b - mpmath.log(c) - d) for a, b, c, d in zip(x, liquid, y, vapour)))
