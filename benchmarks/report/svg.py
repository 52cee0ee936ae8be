"""Plain SVG charts: lines over two logarithmic axes, and groups of bars over one."""
import math

WIDTH, HEIGHT = 720, 400
LEFT, RIGHT, TOP, BOTTOM = 80, 190, 40, 50
COLOURS = ["#1b6ca8", "#d1495b", "#3a7d44", "#edae49", "#6c4f91", "#66717e"]


def _text(x, y, text, anchor="middle", size=12):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" '
            f'font-size="{size}">{text}</text>')


def _line(x1, y1, x2, y2, colour="#cccccc"):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}"/>'


def _page(title, body):
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
        'font-family="sans-serif">',
        f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
        _text(WIDTH / 2, 22, title, size=15), *body, "</svg>", ""])


def _powers(low, high):
    return [10.0 ** e for e in range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)]


def short(number):
    """1500000 as "1.5 M"."""
    for limit, unit in ((1e6, " M"), (1e3, " k")):
        if number >= limit:
            return f"{number / limit:g}{unit}"
    return f"{number:g}"


def _logarithmic(values, start, length):
    ticks = _powers(min(values), max(values))
    low, high = math.log10(ticks[0]), math.log10(ticks[-1])
    span = (high - low) or 1

    def place(value):
        return start + length * (math.log10(value) - low) / span
    return ticks, place


def _legend(names):
    body = []
    for i, name in enumerate(names):
        y = TOP + 12 + 20 * i
        x = WIDTH - RIGHT + 14
        body.append(f'<rect x="{x}" y="{y - 9}" width="12" height="10" '
                    f'fill="{COLOURS[i % len(COLOURS)]}"/>')
        body.append(_text(x + 18, y, name, "start"))
    return body


def line_chart(title, x_label, y_label, series):
    """series: {name: [(x, y), …]}"""
    points = [p for line in series.values() for p in line]
    x_ticks, x_at = _logarithmic([p[0] for p in points], LEFT, WIDTH - LEFT - RIGHT)
    y_ticks, y_at = _logarithmic([p[1] for p in points], HEIGHT - BOTTOM, TOP + BOTTOM - HEIGHT)
    body = []
    for tick in x_ticks:
        body.append(_line(x_at(tick), TOP, x_at(tick), HEIGHT - BOTTOM))
        body.append(_text(x_at(tick), HEIGHT - BOTTOM + 18, short(tick)))
    for tick in y_ticks:
        body.append(_line(LEFT, y_at(tick), WIDTH - RIGHT, y_at(tick)))
        body.append(_text(LEFT - 8, y_at(tick) + 4, short(tick), "end"))
    body.append(_text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 12, x_label))
    body.append(_text(LEFT, TOP - 8, y_label, "middle"))
    for i, line in enumerate(series.values()):
        colour = COLOURS[i % len(COLOURS)]
        path = " ".join(f"{x_at(x):.1f},{y_at(y):.1f}" for x, y in line)
        body.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        body += [f'<circle cx="{x_at(x):.1f}" cy="{y_at(y):.1f}" r="3" fill="{colour}"/>'
                 for x, y in line]
    return _page(title, body + _legend(series))


def bar_chart(title, y_label, groups):
    """groups: {group: {name: value}}; a logarithmic axis, so no bar starts at zero."""
    values = [v for bars in groups.values() for v in bars.values()]
    ticks, y_at = _logarithmic(values, HEIGHT - BOTTOM, TOP + BOTTOM - HEIGHT)
    body = []
    for tick in ticks:
        body.append(_line(LEFT, y_at(tick), WIDTH - RIGHT, y_at(tick)))
        body.append(_text(LEFT - 8, y_at(tick) + 4, short(tick), "end"))
    body.append(_text(LEFT, TOP - 8, y_label, "middle"))
    group_width = (WIDTH - LEFT - RIGHT) / len(groups)
    names = list(next(iter(groups.values())))
    bar_width = group_width * 0.8 / len(names)
    for g, (group, bars) in enumerate(groups.items()):
        x = LEFT + g * group_width + group_width * 0.1
        for i, name in enumerate(names):
            top = y_at(bars[name])
            body.append(f'<rect x="{x + i * bar_width:.1f}" y="{top:.1f}" '
                        f'width="{bar_width * 0.92:.1f}" height="{HEIGHT - BOTTOM - top:.1f}" '
                        f'fill="{COLOURS[i % len(COLOURS)]}"/>')
        for i, part in enumerate(group.split("\n")):
            body.append(_text(x + group_width * 0.4, HEIGHT - BOTTOM + 16 + 14 * i, part, size=11))
    return _page(title, body + _legend(names))
