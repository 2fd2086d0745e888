"""A fluid of two components as black oil: tables of PVTO and PVDG from the equation of state, by flashes written apart from
the program's (equation of state of flash_oracle, viscosity of Lohrenz, Bray and Clark 1964)."""

import functools

import numpy

import flash_oracle

# Gas and oil by least squares from the tables of the first comparative study (Odeh 1981), 2500 to 5000 psia, the densities at the
# surface exactly: name, critical temperature R, pressure psia, volume ft3/lb-mole, molecular weight, acentric factor. Oil is so
# heavy that none of it goes into the gas: tables of dry gas have no place for it.
GAS = ("GAS", 383.5, 434.8, 2.62, 20.12, 0.0914)
OIL = ("OIL", 1859.0, 390.5, 13.23, 220.1, 1.405)
BINARY = -0.56  # coefficient of the pair
SURFACE_PRESSURE, SURFACE_TEMPERATURE = 14.7, 519.67  # psia, Rankine
CUBIC_FEET_PER_BARREL = 5.614583333
LOW_PRESSURE, PRESSURE_FACTOR = 1000.0, 1.15  # psia; above it tie lines are followed in steps of the factor


class Fluid:
    def __init__(self, temperature):
        _, self.tc, self.pc, self.vc, self.mw, self.acentric = (numpy.array(column) for column in zip(GAS, OIL))
        self.temperature = temperature
        pairs = numpy.array([[0.0, BINARY], [BINARY, 0.0]])
        self.reservoir = flash_oracle.Mixture(self.tc, self.pc, self.acentric, pairs, temperature)
        self.surface = flash_oracle.Mixture(self.tc, self.pc, self.acentric, pairs, SURFACE_TEMPERATURE)

    @staticmethod
    def volume(mix, x, p):
        """ft3/lb-mole at the root of least Gibbs energy."""
        x = numpy.asarray(x, dtype=float)[None, :]
        rt = flash_oracle.GAS_CONSTANT * mix.temperature
        A, B = ((x @ mix.a) * x).sum(axis=1) * p / rt**2, x @ mix.b * p / rt
        s, best, least = numpy.sqrt(2.0), None, numpy.inf
        for z in flash_oracle.cubic_roots(A, B):
            z = float(z[0])
            if not z > B[0] * (1 + 1e-12):
                continue
            gibbs = z - 1 - numpy.log(z - B[0]) - A[0] / (2 * s * B[0]) * numpy.log((z + (1 + s) * B[0]) / (z + (1 - s) * B[0]))
            if gibbs < least:
                best, least = z, gibbs
        return best * rt / p

    def split(self, mix, p):
        """Fractions of gas in the liquid and in the vapour: two components have one tie line at a pressure."""
        x, y, _ = self.tie_line(mix, p)
        return x, y

    @functools.lru_cache(maxsize=None)
    def tie_line(self, mix, p):
        """Both fractions and ln K, by substitution: from K-values of Wilson (1969) at low pressures, above from those of a
        pressure below."""
        k = numpy.log(self.pc / p) + 5.37 * (1 + self.acentric) * (1 - self.tc / mix.temperature)
        if p > LOW_PRESSURE:
            steps = numpy.ceil(numpy.log(p / LOW_PRESSURE) / numpy.log(PRESSURE_FACTOR)) - 1
            k = self.tie_line(mix, LOW_PRESSURE * PRESSURE_FACTOR**steps)[2]
        for _ in range(5000):
            ratio = numpy.exp(k)
            x = (1 - ratio[1]) / (ratio[0] - ratio[1])
            y = x * ratio[0]
            new = (mix.ln_phi(numpy.array([[x, 1 - x]]), p) - mix.ln_phi(numpy.array([[y, 1 - y]]), p))[0]
            change = numpy.abs(new - k).max()
            k = new
            if change < 1e-12:
                return x, y, k
        raise ValueError("no tie line")

    def surface_volumes(self, x):
        """ft3 of oil and of gas at the surface from a lb-mole of gas fraction x."""
        liquid, vapour = self.split(self.surface, SURFACE_PRESSURE)
        part = min(max((x - liquid) / (vapour - liquid), 0.0), 1.0)
        if part == 0.0:
            liquid = x
        if part == 1.0:
            vapour = x
        return ((1 - part) * self.volume(self.surface, [liquid, 1 - liquid], SURFACE_PRESSURE),
                part * self.volume(self.surface, [vapour, 1 - vapour], SURFACE_PRESSURE))

    def viscosity(self, x, volume):
        x = numpy.array([x, 1 - x])

        def inverse(tc, pc, mw):
            return (tc / 1.8) ** (1 / 6) / (numpy.sqrt(mw) * (pc / 14.696) ** (2 / 3))

        tr = self.temperature / self.tc
        dilute = numpy.where(tr <= 1.5, 0.00034 * tr**0.94,
                             0.0001778 * numpy.maximum(4.58 * tr - 1.67, 0.0) ** 0.625) / inverse(self.tc, self.pc, self.mw)
        low = (x * dilute * numpy.sqrt(self.mw)).sum() / (x * numpy.sqrt(self.mw)).sum()
        xi, r = inverse(x @ self.tc, x @ self.pc, x @ self.mw), x @ self.vc / volume
        poly = 0.1023 + 0.023364 * r + 0.058533 * r**2 - 0.040758 * r**3 + 0.0093324 * r**4
        return low + 2.05e-4 * r / xi if r < 0.18 else low + (poly**4 - 1e-4) / xi

    def liquid_row(self, x, p):
        """Rs Mscf/stb, Bo rb/stb and viscosity of a liquid of gas fraction x."""
        oil, gas = self.surface_volumes(x)
        volume = self.volume(self.reservoir, [x, 1 - x], p)
        return gas / oil * CUBIC_FEET_PER_BARREL / 1000, volume / oil, self.viscosity(x, volume)

    def pvto(self, pressures, above=(1.025, 1.05, 1.1, 1.15, 1.2, 1.35, 1.6, 2.2)):
        rows = []
        for p in pressures:
            x, _ = self.split(self.reservoir, p)
            rs, bo, mu = self.liquid_row(x, p)
            rows.append(f"{rs:.8f} {p:.4f} {bo:.8f} {mu:.8f}")
            for factor in above:
                _, bo, mu = self.liquid_row(x, p * factor)
                rows.append(f" {p * factor:.4f} {bo:.8f} {mu:.8f}")
            rows[-1] += " /"
        return "PVTO\n" + "\n".join(rows) + "\n/\n"

    def pvdg(self, pressures):
        rows = []
        for p in pressures:
            _, y = self.split(self.reservoir, p)
            _, gas = self.surface_volumes(y)
            volume = self.volume(self.reservoir, [y, 1 - y], p)
            rows.append(f"{p:.4f} {volume / gas * 1000 / CUBIC_FEET_PER_BARREL:.8f} {self.viscosity(y, volume):.8f}")
        return "PVDG\n" + "\n".join(rows) + " /\n"

    def densities(self):
        """lb/ft3 of stock-tank oil and surface gas."""
        liquid, vapour = self.split(self.surface, SURFACE_PRESSURE)
        return [numpy.array([x, 1 - x]) @ self.mw / self.volume(self.surface, [x, 1 - x], SURFACE_PRESSURE)
                for x in (liquid, vapour)]
