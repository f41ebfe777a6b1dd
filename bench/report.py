# SPDX-License-Identifier: Apache-2.0
"""Prints benchmark runs as one table, or draws them.

Usage: report.py FILE.json...            the table, in Markdown
       report.py --growth FILE.json...   the cost as the work grows, in Markdown
       report.py --plot OUT.svg FILE...  the cost as the work grows
"""

import json
import statistics
import sys


def medians(files):
    """{case: {"time": ns, "bytes": ..., ...}}: the median over the processes of their fastest runs.

    The fastest of a process's runs is the one that other work of the machine and changes of its
    clock rate disturbed least.
    """
    fastest = {}
    for name in files:
        of_process = {}
        with open(name, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run["run_type"] == "iteration":
                    case = run["run_name"]
                    if case not in of_process or run["cpu_time"] < of_process[case]["cpu_time"]:
                        of_process[case] = run
        for case, run in of_process.items():
            fastest.setdefault(case, []).append(run)
    result = {}
    in_order = sorted(fastest.items(), key=lambda entry: entry[1][0]["family_index"])
    for case, runs in in_order:
        result[case] = {"time": statistics.median(run["cpu_time"] for run in runs)}
        for counter in ("bytes", "allocations", "allocated"):
            result[case][counter] = statistics.median(run[counter] for run in runs)
    return result


def print_table(cases):
    makers = ["picojson", "nlohmann", "rapidjson"]
    print("| Text | bytes | time | allocations | allocated | x copy |"
          " picojson tree | nlohmann tree | RapidJSON writer |")
    print("|---|--:|--:|--:|--:|--:|--:|--:|--:|")
    for case, ours in cases.items():
        text, _, maker = case.rpartition("/")
        if maker != "ours":
            continue
        copy = cases[text + "/copy"]
        row = [text, f"{copy['bytes']:.0f}", f"{ours['time']:.0f} ns", f"{ours['allocations']:.0f}",
               f"{ours['allocated']:.0f}", f"{ours['time'] / copy['time']:.1f}"]
        for other in makers:
            their = cases.get(f"{text}/{other}")
            row.append(f"{their['time'] / ours['time']:.0f}x slower" if their else "")
        print("| " + " | ".join(row) + " |")


def growth(cases):
    """{name: [(size, ns)]}"""
    lines = {}
    for case, values in cases.items():
        if case.startswith("growth "):
            name, _, size = case[len("growth "):].rpartition("/")
            lines.setdefault(name, []).append((int(size), values["time"]))
    return {name: sorted(points) for name, points in lines.items()}


def print_growth(cases):
    print("| Growing | size | time | for each |")
    print("|---|--:|--:|--:|")
    for name, points in growth(cases).items():
        for size, time in points:
            each = f"{time / size:.2f} ns" if "text" not in name else ""
            print(f"| {name} | {size} | {time:.0f} ns | {each} |")


captions = {
    "receivers": "list of receivers, by their number",
    "plain text": "24 receivers, by bytes in each description",
    "escaped text": "the same, every byte needs an escape",
    "sdp lines": "SDP analysed, by lines (100 are examined)",
    "sdp line length": "SDP analysed, by bytes of its one line",
    "sdp media id": "SDP analysed, by bytes of a media id and its line",
}


def in_unit(nanoseconds):
    for limit, divisor, unit in ((1e3, 1, "ns"), (1e6, 1e3, "us"), (float("inf"), 1e6, "ms")):
        if nanoseconds < limit:
            return f"{nanoseconds / divisor:.3g} {unit}"


def draw(cases, file_name):
    width, height, margin = 460, 240, 80
    panels = []
    for number, (name, points) in enumerate(growth(cases).items()):
        largest_x = max(x for x, _ in points) or 1
        largest_y = max(y for _, y in points)
        left = (number % 2) * (width + 30) + margin
        top = (number // 2) * (height + 40) + 30
        plot_width, plot_height = width - margin, height - margin

        def place(x, y):
            return (left + x / largest_x * plot_width, top + (1 - y / largest_y) * plot_height)

        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in (place(*point) for point in points))
        dots = "".join(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="2.5"/>'
                       for x, y in (place(*point) for point in points))
        panels.append(
            f'<text x="{left}" y="{top - 10}" font-weight="bold">{captions[name]}</text>'
            f'<path d="M{left} {top}V{top + plot_height}H{left + plot_width}" fill="none" '
            f'stroke="#888"/>'
            f'<polyline points="{path}" fill="none" stroke="#06c" stroke-width="1.5"/>'
            f'<g fill="#06c">{dots}</g>'
            f'<text x="{left - 4}" y="{top + 8}" text-anchor="end">{in_unit(largest_y)}</text>'
            f'<text x="{left + plot_width}" y="{top + plot_height + 16}" text-anchor="end">'
            f'{largest_x}</text>'
            f'<text x="{left}" y="{top + plot_height + 16}">0</text>')
    rows = (len(panels) + 1) // 2
    with open(file_name, "w", encoding="utf-8") as file:
        file.write(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {2 * width + 80} '
                   f'{rows * (height + 40) + 20}" font-family="sans-serif" font-size="12">'
                   '<rect width="100%" height="100%" fill="#fff"/>'
                   f'{"".join(panels)}</svg>\n')


def main():
    arguments = sys.argv[1:]
    if arguments[:1] == ["--growth"] and len(arguments) > 1:
        print_growth(medians(arguments[1:]))
    elif arguments[:1] == ["--plot"] and len(arguments) > 2:
        draw(medians(arguments[2:]), arguments[1])
    elif arguments and not arguments[0].startswith("-"):
        print_table(medians(arguments))
    else:
        sys.exit(__doc__)


main()
