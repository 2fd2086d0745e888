"""All plots of a model of 1.1 million cells: time and memory that their writing takes."""

import lzma
import resource

import kvr_run
import tecplot
from kvr_run import finished_normally, run
from public_floods import needs_public_decks

CELLS = 60 * 220 * 85
MOST_SECONDS = 12.0  # of processor for all plots of one report
MOST_MEMORY = 20000  # KB beyond the run without plots; one value per cell alone is 8800


def at_rest(folder, switches):
    """The model with an empty schedule: the files of time zero, then one report."""
    deck = kvr_run.public_deck("waterflood/FIVE85.DATA")
    include = kvr_run.PUBLIC_DECKS / "waterflood" / "FIVE85.INC.xz"
    options = kvr_run.options(lines=1).replace("1 0 0 0 0 0 0 1 0 0", switches)
    folder.mkdir()
    result = finished_normally(run(folder, deck[:deck.index("TSTEP")] + "END\n" + options,
                                   {"FIVE85.INC": lzma.decompress(include.read_bytes())}))
    return result, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss


def report_seconds(result):
    """Processor seconds of the one report, as the run's own table of stages tells."""
    line, = [line for line in result.console.splitlines() if line.startswith("Reports ")]
    return float(line.split()[2])


@needs_public_decks
def test_all_plots_of_a_large_model_take_seconds_and_no_memory_of_their_own(tmp_path):
    _, memory_without = at_rest(tmp_path / "off", "1 0 0 0 0 0 0 0 0 0")
    result, memory = at_rest(tmp_path / "on", "1 1 1 0 0 0 0 1 0 0")
    assert report_seconds(result) <= MOST_SECONDS
    assert memory - memory_without <= MOST_MEMORY
    for name in ("KVR_TPlot_poil.plt", "KVR_Run_Pressure.out", "KVR_Excl_Grid_Prs.xls"):
        assert (result.folder / name).stat().st_size > 10 * CELLS
    zone, = tecplot.read_zones(result.folder / "KVR_Tplot_Static_kx.plt")
    assert zone.cells == (60, 220, 85)
    for name in result.folder.glob("*"):
        name.unlink()  # half a gigabyte
