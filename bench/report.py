"""Turns the raw figures of a measurement into tables: report.py program|peers RAWFOLDER.

Every ratio is the median of the ratios of the paired runs, every other figure the median of its
runs. Each goal is printed with what was measured and whether it was reached.
"""

import collections
import json
import os
import statistics
import sys

PLACES = ["pinned", "free"]
Run = collections.namedtuple("Run", "count ns peak bytes")


def median(values):
    values = list(values)
    if not values:
        raise SystemExit("a figure has no runs")
    return statistics.median(values)


def table(head, rows):
    widths = [max(len(str(row[n])) for row in [head] + rows) for n in range(len(head))]
    def line(cells):
        padded = [str(cell).ljust(width) if n == 0 else str(cell).rjust(width)
                  for n, (cell, width) in enumerate(zip(cells, widths))]
        return "| " + " | ".join(padded) + " |"
    rule = "|" + "|".join(("-" * (width + 1) + ":") if n else "-" * (width + 2)
                          for n, width in enumerate(widths)) + "|"
    print("\n".join([line(head), rule] + [line(row) for row in rows]) + "\n")


def whole(number):
    return f"{number:,.0f}"


class Figures:
    """The runs of one driver, by figure, size and variant, in one place."""

    def __init__(self, path):
        self.runs = collections.defaultdict(dict)
        with open(path) as lines:
            for line in lines:
                figure, size, variant, number, count, ns, peak, size_bytes = line.split("\t")
                run = Run(int(count), max(int(ns), 1), int(peak), int(size_bytes))
                self.runs[figure, int(size), variant][int(number)] = run

    def sizes(self, figure):
        return sorted({size for name, size, _ in self.runs if name == figure})

    def of(self, figure, size, variant):
        return self.runs[figure, size, variant]

    def median(self, what, *key):
        return median(what(run) for run in self.of(*key).values())

    def rate(self, *key):
        return self.median(lambda run: run.count / run.ns * 1e9, *key)

    def milliseconds(self, *key):
        return self.median(lambda run: run.ns / 1e6, *key)

    def megabytes(self, *key):
        return self.median(lambda run: run.peak / 1024, *key)

    def rate_ratio(self, figure, size, variant, limit):
        """How far a variant comes of a limit's rate."""
        ours, theirs = self.of(figure, size, variant), self.of(figure, size, limit)
        return median((ours[n].count / ours[n].ns) / (theirs[n].count / theirs[n].ns)
                      for n in ours if n in theirs)

    def time_ratio(self, figure, size, variant, limit):
        return 1 / self.rate_ratio(figure, size, variant, limit)


class Goals:
    def __init__(self):
        self.rows = []

    def add(self, text, place, limit, measured, reached):
        self.rows.append([text, place, limit, measured, "reached" if reached else "missed"])

    def at_least(self, text, place, limit, measured, form="{:.2f}"):
        self.add(text, place, "at least " + form.format(limit), form.format(measured),
                 measured >= limit)

    def below(self, text, place, limit, measured, unit):
        self.add(text, place, f"below {limit} {unit}", f"{measured:.2f} {unit}", measured < limit)

    def print(self):
        print("#### Goals\n")
        table(["goal", "ends", "limit", "measured", ""], self.rows)


def places(raw, name, extension="tsv"):
    for place in PLACES:
        yield place, os.path.join(raw, f"{name}-{place}.{extension}")


def sessions(raw, goals):
    print("#### A client session over the loopback\n\nFrames a second. \"Bare\" is a blocking "
          "ping-pong of one frame and one ACK of the same sizes; \"checked\" is the same with a "
          "sliced CRC\nand each frame appended to a file. The last column compares a whole run "
          "with brenniksim as the service to one with the bare sender.\n")
    rows = []
    for place, path in places(raw, "sessions"):
        figures = Figures(path)
        for size in figures.sizes("session"):
            key = ("session", size)
            off, logged = (figures.rate_ratio(*key, name, "bare") for name in ("log-off", "log-all"))
            checked = figures.rate_ratio(*key, "log-off", "checked")
            rows.append([
                f"{place}, {size}", whole(figures.rate(*key, "bare")),
                whole(figures.rate(*key, "checked")), whole(figures.rate(*key, "log-off")),
                f"{off:.2f}", f"{checked:.2f}", whole(figures.rate(*key, "log-all")),
                f"{logged:.2f}",
                whole(figures.median(lambda run: run.bytes / run.count, *key, "log-all")),
                f"{figures.rate_ratio(*key, 'whole-service', 'whole-sender'):.2f}"])
            if size == 1024:
                goals.at_least("session / bare, 1024 bytes, no log", place,
                               0.75 if place == "pinned" else 0.95, off)
                if place == "pinned":
                    goals.at_least("session / bare, 1024 bytes, all logged", place, 0.40, logged)
            if size == 60000:
                goals.at_least("session / checked, 60000 bytes, no log", place, 0.85, checked)
    table(["ends, block", "bare", "checked", "session", "/ bare", "/ checked", "all logged",
           "/ bare", "log bytes a frame", "service / sender"], rows)


def windows(raw, goals):
    print("#### The windows\n\nThe same session with the status window open, on a display in memory, "
          "blocks of 1024 bytes, no log; frames a second.\n")
    rows = []
    for place, path in places(raw, "windows"):
        figures = Figures(path)
        size = figures.sizes("windows")[0]
        ratio = figures.rate_ratio("windows", size, "window", "unattended")
        rows.append([f"{place}, {size}"] +
                    [whole(figures.rate("windows", size, name)) for name in ("unattended", "window")]
                    + [f"{ratio:.3f}"] +
                    [f"{figures.megabytes('windows', size, name):.1f} MB"
                     for name in ("unattended", "window")])
        goals.at_least("session with the status window / unattended, 1024 bytes", place, 0.90,
                       ratio, "{:.3f}")
    table(["ends, block", "unattended", "in windows", "/ unattended", "peak memory, unattended",
           "in windows"], rows)


def lines(raw, goals):
    print("#### A client session over a serial line\n\nA pseudo-terminal with brenniksim behind it, "
          "blocks of 1024 bytes. The limit is what the behaviour itself sets: a frame of 1034 "
          "bytes and an ACK on the line,\nand the 10 ms of silence that end a delivery. Times are "
          "for one more block.\n")
    rows = []
    for place, path in places(raw, "lines"):
        figures = Figures(path)
        for rate in figures.sizes("line"):
            def per_block(what):
                many, one = (figures.of("line", rate, f"{what}-{which}") for which in ("many", "one"))
                return median((many[n].ns - one[n].ns) / (many[n].count - one[n].count)
                              for n in many if n in one)
            time, cpu = per_block("time") / 1e6, per_block("cpu") / 1e3
            limit = (1035 * 10 / rate * 1e3 if rate else 0) + 10
            share = f"{1034 * 10 / rate * 1e3 / time:.2f}" if rate else ""
            rows.append([f"{place}, {whole(rate) + ' bit/s' if rate else 'not paced'}",
                         f"{time:.2f} ms", f"{limit:.2f} ms", f"{limit / time:.3f}", share,
                         f"{cpu:.0f} us"])
            if rate:
                goals.at_least(f"line of {whole(rate)} bit/s, share of the limit", place, 0.97,
                               limit / time, "{:.3f}")
            else:
                goals.below("line not paced, a frame", place, 10.5, time, "ms")
                goals.below("line not paced, processor time of a frame", place, 200, cpu, "us")
    table(["ends, line", "a block", "limit", "share of the limit", "share of the line",
           "processor time"], rows)


def per_frame(figures, size, variant):
    """Microseconds of one more frame: a run with many against one with a single frame."""
    many, one = (figures.of("relay", size, f"{variant}-{which}") for which in ("many", "one"))
    return median((many[n].ns - one[n].ns) / (many[n].count - one[n].count)
                  for n in many if n in one) / 1e3


def relay_peers(raw, goals):
    print("#### The pass-through beside other programs\n\nThey join the socket and the line, and "
          "neither check nor understand a frame. ser2net is tuned by `chardelay: false`.\n")
    rows = []
    for place, path in places(raw, "relay-peers"):
        figures = Figures(path)
        for size in figures.sizes("relay"):
            times = [per_frame(figures, size, variant)
                     for variant in ("off", "bare", "socat", "ser2net", "ser2net-untuned")]
            rows.append([f"{place}, {size}"] + [whole(1e6 / time) for time in times])
            goals.at_least(f"relay of {size} bytes / tuned ser2net", place, 1.0,
                           times[3] / times[0])
    table(["ends, frame", "brennikclient", "bare loop", "socat", "ser2net, tuned",
           "ser2net, as installed"], rows)


def relays(raw, goals):
    print("#### The pass-through\n\nBetween brenniksim as a service and brenniksim as a device. "
          "The bare loop polls, reads and writes both ways and understands nothing; where frames "
          "of more than\n1000 bytes are written with pauses of 10 ms, the pauses are the limit, "
          "and where the device sends, the 10 ms that end a delivery.\n")
    rows = []
    for place, path in places(raw, "relays"):
        figures = Figures(path)
        for size in figures.sizes("relay"):
            bare, off, logged = (per_frame(figures, size, name) for name in ("bare", "off", "log"))
            pauses = (size - 1) // 1000 * 10000
            share = f"{pauses / off:.3f}" if pauses else f"{bare / off:.2f}"
            rows.append([f"{place}, {size}", f"{bare:.0f} us", f"{off:.0f} us", f"{logged:.0f} us",
                         f"{off - bare - pauses:.0f} us", "pauses" if pauses else "bare loop",
                         share, f"{(pauses + bare) / off:.3f}"])
            if pauses:
                goals.at_least(f"relay of {whole(size)} bytes, share of the pauses", place, 0.97,
                               pauses / off, "{:.3f}")
            else:
                goals.at_least(f"relay of {size} bytes / bare loop", place, 0.7, bare / off)
        upload = per_frame(figures, 1034, "upload")
        rows.append([f"{place}, upload 1034", "", f"{upload:.0f} us", "", "", "10 ms",
                     f"{10000 / upload:.3f}", ""])
        goals.at_least("upload relay, share of its gaps", place, 0.97, 10000 / upload, "{:.3f}")
        paced = per_frame(figures, 1034, "paced")
        line = 1034 * 10 / 115200 * 1e6
        rows.append([f"{place}, 1034 at 115,200 bit/s", "", f"{paced:.0f} us", "", "", "the line",
                     f"{line / paced:.3f}", ""])
        goals.at_least("relay at 115,200 bit/s, share of the line", place, 0.97, line / paced,
                       "{:.3f}")
        peaks = [max(run.peak for run in figures.of("relay", 256, f"growth-{which}").values())
                 for which in ("many", "one")]
        goals.below("memory of 100,000 relayed frames over that of 1,000", place, 0.5,
                    (peaks[0] - peaks[1]) / 1024, "MB")
    table(["ends, frame", "bare loop", "a frame", "all logged", "added", "limit",
           "share of the limit", "of pauses and bare loop"], rows)


def start(raw, goals):
    print("#### Cold start\n\nFrom exec to the first connection, with a file of 50 profiles; the "
          "limit is a program that does nothing but connect.\n")
    rows = []
    for place, path in places(raw, "start"):
        figures = Figures(path)
        size = figures.sizes("start")[0]
        time = figures.milliseconds("start", size, "client")
        peak = figures.megabytes("start", size, "client")
        rows.append([place, f"{time:.2f} ms", f"{figures.milliseconds('start', size, 'bare'):.2f} ms",
                     f"{figures.time_ratio('start', size, 'client', 'bare'):.2f}", f"{peak:.1f} MB",
                     f"{figures.megabytes('start', size, 'bare'):.1f} MB"])
        if peak <= figures.megabytes("start", size, "before-exec") * 1.01:
            print("The peak is that of the measuring process and says nothing of the program.\n")
        goals.below("exec to first connect, 50 profiles", place, 5, time, "ms")
        goals.below("peak memory of that run", place, 6, peak, "MB")
    table(["ends", "brennikclient", "bare connect", "ratio", "peak memory", "bare peak"], rows)


def growth(raw, goals):
    print("#### Growth\n\nThe limit of a session is the checked ping-pong of the same files, that "
          "of the list one pass over its file. A small one is a hundredth of the\nfiles, a file of "
          "1 MB, a list of one.\n")
    rows = []
    names = {"files": "{count} files of 1024 bytes", "big-file": "one file of {mb} MB, blocks of "
             "60000", "list": "list of {count} profiles"}
    for place, path in places(raw, "growth"):
        figures = Figures(path)
        for name, text in names.items():
            sizes = figures.sizes(name)
            small, size = sizes[0], sizes[-1]
            limit = "read-file" if name == "list" else "checked"
            run = next(iter(figures.of(name, size, "client").values()))
            time = figures.milliseconds(name, size, "client")
            peaks = [figures.megabytes(name, at, variant)
                     for at, variant in ((size, "client"), (small, "client-small"))]
            label = text.format(count=run.count, mb=whole(run.bytes / (1 << 20)))
            rows.append([f"{place}, {label}", f"{time:,.1f} ms",
                         f"{figures.milliseconds(name, size, limit):,.1f} ms",
                         f"{figures.time_ratio(name, size, 'client', limit):.2f}",
                         f"{peaks[0]:.1f} MB", f"{peaks[1]:.1f} MB"])
            if name == "big-file":
                # Flat: no more than what one run differs from the next.
                goals.below("memory of a big file over that of a small one", place, 0.5,
                            peaks[0] - peaks[1], "MB")
            if name == "list":
                goals.below(label, place, 1, time / 1000, "s")
    table(["ends, what", "program", "limit", "ratio", "peak memory", "of a small one"], rows)


PIECES = [
    # what, benchmark, its limit, whether in MB/s
    ("CRC16, 64 bytes", "crc16/program/64", "crc16/sliced-16/64", True),
    ("CRC16, 1034 bytes", "crc16/program/1034", "crc16/sliced-16/1034", True),
    ("CRC16, 60010 bytes", "crc16/program/60010", "crc16/sliced-16/60010", True),
    ("bitwise, 1034 bytes", "crc16/bitwise/1034", "crc16/sliced-16/1034", True),
    ("one table, 1034 bytes", "crc16/one-table/1034", "crc16/sliced-16/1034", True),
    ("sliced by 8, 1034 bytes", "crc16/sliced-8/1034", "crc16/sliced-16/1034", True),
    ("sliced by 16, 1034 bytes", "crc16/sliced-16/1034", "lrc/words/1034", True),
    ("LRC, 1034 bytes", "lrc/program/1034", "lrc/words/1034", True),
    ("LRC, 60010 bytes", "lrc/program/60010", "lrc/words/60010", True),
    ("write data packets parsed, 1024 bytes", "parse/write-data", "parse/copy", False),
    ("open file packets parsed", "parse/open-file", "parse/copy", False),
    ("frames read, checked and parsed", "parse/frame", "parse/copy", False),
    ("log lines", "log/line", "log/append-line", False),
    ("log lines of a frame of 1034 bytes", "log/frame", "log/append-frame", False),
]


def pieces(raw, goals):
    print("#### Block checks, packets, log lines\n\nThe limit of CRC16 is a plain table sliced by "
          "sixteen, of LRC one pass over the words, of a packet one copy of 1024 bytes, of a log "
          "line one open,\nwrite and close.\n")
    rows = []
    for place, path in places(raw, "pieces", "json"):
        with open(path) as text:
            runs = collections.defaultdict(dict)
            for run in json.load(text)["benchmarks"]:
                if run.get("error_occurred"):
                    raise SystemExit(f"{run['name']}: {run['error_message']}")
                if run["run_type"] == "iteration":
                    runs[run["run_name"]][run["repetition_index"]] = run["real_time"]  # ns

        def speed(name, in_megabytes):
            size = int(name.rsplit("/", 1)[1]) if in_megabytes else None
            time = median(runs[name].values())
            return (f"{size / time * 1e3:,.0f} MB/s" if in_megabytes
                    else f"{1e9 / time:,.0f} a second")

        for what, name, limit, in_megabytes in PIECES:
            ratio = median(runs[limit][n] / runs[name][n] for n in runs[name])
            rows.append([f"{place}, {what}", speed(name, in_megabytes),
                         speed(limit, in_megabytes), f"{ratio:.2f}"])
        goals.at_least("CRC16 at 1034 bytes, MB/s", place, 3000,
                       1034e3 / median(runs["crc16/program/1034"].values()), "{:,.0f}")
    table(["ends, what", "speed", "limit", "ratio"], rows)


def peers(raw, goals):
    print("#### Beside other protocols\n\nOne file over the loopback; process start and end taken "
          "off on all sides. Ours is brennikclient with brenniksim;\n\"bare sender\" "
          "is the same client with frames made beforehand.\n")
    rows = []
    names = {"brennik": "Brennik", "brennik-sender": "Brennik, bare sender",
             "tftp": "TFTP (atftp)", "xmodem-1k": "XMODEM-1K (lrzsz)",
             "kermit": "C-Kermit, no streaming"}
    wanted = {("tftp", 1024): ("ahead of TFTP, frames a second", 1.0),
              ("xmodem-1k", 1024): ("to XMODEM-1K, frames a second", 1.3),
              ("kermit", 1000): ("to C-Kermit, frames a second", 2.0)}
    for place, path in places(raw, "peers"):
        runs = collections.defaultdict(dict)
        with open(path) as lines:
            for line in lines:
                peer, size, number, frames, ns, size_bytes = line.split("\t")
                ns = max(int(ns), 1)
                runs[peer, int(size)][int(number)] = (int(frames) / ns * 1e9,
                                                      int(size_bytes) / ns * 1e3)
        ours = runs["brennik", 1024]
        for (peer, size), theirs in runs.items():
            ratios = [median(ours[n][unit] / theirs[n][unit] for n in theirs) for unit in (0, 1)]
            rows.append([f"{place}, {names[peer]}, {size}",
                         whole(median(run[0] for run in theirs.values())),
                         f"{median(run[1] for run in theirs.values()):.1f}",
                         f"{ratios[0]:.2f}", f"{ratios[1]:.2f}"])
            if place == "pinned" and (peer, size) in wanted:
                text, limit = wanted[peer, size]
                goals.at_least(text, place, limit, ratios[0])
    rows.sort(key=lambda row: PLACES.index(row[0].split(",")[0]))
    table(["ends, peer, block", "frames a second", "MB/s", "ours / it, frames", "ours / it, MB/s"],
          rows)


def main():
    what, raw = sys.argv[1:]
    goals = Goals()
    print()
    with open(os.path.join(raw, "machine.txt")) as text:
        print("Measured on " + text.read().replace("\n", "; ").rstrip("; ") + ".\n")
    for part in [peers, relay_peers] if what == "peers" else [sessions, windows, lines, relays, pieces, start, growth]:
        part(raw, goals)
    goals.print()


main()
