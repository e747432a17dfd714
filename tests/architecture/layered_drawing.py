"""Draws a graph without circles in layers, as an SVG whose bytes depend on the graph alone.

Every arrow leads downward. A node lies one layer above the highest that it points to. An arrow that
passes layers has a bend in each, which takes a place there like a node, so that it meets no box.
The order in a layer is that of the neighbours' average; places are then evened out between both
sides.
"""

import html

LETTER, BOX, LAYER, GAP, BEND, MARGIN = 8.2, 34, 84, 22, 10, 28  # pixels
ROUNDS = 24
STEEPEST = 0.9  # how far an arrow leans where it passes between two boxes
# Fill and frame of a box, by the top folder.
COLORS = {"rastrel": ("#e3edf9", "#3b6ea5"), "host": ("#e9f4e4", "#4c8a3a"),
          "children": ("#fdeedd", "#b8701f"), "cli": ("#f3e6f6", "#8a4a99"),
          "pages": ("#fbf6d3", "#94861c"), "cfplane": ("#fbf6d3", "#94861c"), "interpreter": ("#fbf6d3", "#94861c"),
          "spreadsheet": ("#fbf6d3", "#94861c")}
# Where a top folder belongs, from left to right.
COLUMNS = ("children", "interpreter", "pages", "cfplane", "rastrel", "spreadsheet", "host", "cli")


def column(node):
    top = node[0].split("/")[0]
    return COLUMNS.index(top) if top in COLUMNS else len(COLUMNS)


def layers_of(graph):
    level = {}

    def place(node):
        if node not in level:
            level[node] = 1 + max(map(place, graph[node]), default=-1)
        return level[node]

    for node in sorted(graph):
        place(node)
    # A room stands straight below the lowest room that uses it, where it has users.
    users = {node: [own for own in graph if node in graph[own]] for node in graph}
    for node in sorted(graph, key=lambda node: (-level[node], node)):
        if users[node] and graph[node] and len(graph[node]) == 1:
            level[node] = min(level[own] for own in users[node]) - 1
    return level


class Drawing:
    """Places of nodes and bends. A bend is (source, target, layer)."""

    def __init__(self, graph, marked):
        self.marked = marked
        self.level = layers_of(graph)
        self.rows = [[] for _ in range(max(self.level.values()) + 1)]
        self.below, self.above, self.paths = {}, {}, []
        for node in sorted(graph, key=lambda node: (column(node), node)):
            self.rows[self.level[node]].append(node)
        for own in sorted(graph):
            for other in sorted(graph[own]):
                self.add_path(own, other)
        self.order_rows()
        self.x = {}
        self.place()

    def add_path(self, own, other):
        steps = [own]
        for layer in range(self.level[own] - 1, self.level[other], -1):
            steps.append((own, other, layer))
            self.rows[layer].append(steps[-1])
        steps.append(other)
        self.paths.append(steps)
        for upper, lower in zip(steps, steps[1:]):
            self.below.setdefault(upper, []).append(lower)
            self.above.setdefault(lower, []).append(upper)

    def crossings(self, rows):
        total = 0
        for upper, lower in zip(rows[1:], rows):
            place = {node: index for index, node in enumerate(lower)}
            ends = [place[other] for node in upper
                    for other in sorted(self.below.get(node, []), key=place.get)]
            total += sum(a > b for index, a in enumerate(ends) for b in ends[index + 1:])
        return total

    def order_rows(self):
        """The order with the fewest crossings that sweeping up and down comes upon."""
        best, fewest = [list(row) for row in self.rows], self.crossings(self.rows)
        for turn in range(ROUNDS):
            upward = turn % 2 == 0
            neighbours = self.below if upward else self.above
            order = range(1, len(self.rows)) if upward else range(len(self.rows) - 2, -1, -1)
            for layer in order:
                fixed = self.rows[layer - 1 if upward else layer + 1]
                at = {node: (index + 0.5) / len(fixed) for index, node in enumerate(fixed)}
                row = self.rows[layer]
                own = {node: (index + 0.5) / len(row) for index, node in enumerate(row)}
                row.sort(key=lambda node: average([at[other] for other in neighbours.get(node, [])],
                                                  own[node]))
            count = self.crossings(self.rows)
            if count < fewest:
                best, fewest = [list(row) for row in self.rows], count
        self.rows = best
        self.swap_neighbours(fewest)

    def swap_neighbours(self, fewest):
        better = True
        while better:
            better = False
            for row in self.rows:
                for index in range(len(row) - 1):
                    row[index], row[index + 1] = row[index + 1], row[index]
                    count = self.crossings(self.rows)
                    if count < fewest:
                        fewest, better = count, True
                    else:
                        row[index], row[index + 1] = row[index + 1], row[index]

    def width(self, node):
        if not isinstance(node[0], str):
            return BEND
        return max(map(len, node)) * LETTER + 26

    def height(self, node):
        return BOX + 16 * (len(node) - 1)

    def place(self):
        for row in self.rows:
            x = 0.0
            for node in row:
                self.x[node] = x + self.width(node) / 2
                x += self.width(node) + GAP
        for turn in range(ROUNDS * 20):
            rows = self.rows if turn % 2 == 0 else list(reversed(self.rows))
            for row in rows:
                self.relax(row)
        left = min(self.x[node] - self.width(node) / 2 for row in self.rows for node in row)
        for node in self.x:
            self.x[node] += MARGIN - left

    def relax(self, row):
        """Moves the nodes of a row towards their neighbours; the order and the gaps stay."""
        wish = [average([self.x[other] for other in
                         self.above.get(node, []) + self.below.get(node, [])], self.x[node])
                for node in row]
        # Blocks of nodes that touch share the average of what their members wish.
        blocks = []
        offset = 0.0
        for index, node in enumerate(row):
            if index:
                offset += (self.width(row[index - 1]) + self.width(node)) / 2 + GAP
            weight = 6.0 if isinstance(node[0], tuple) else 1.0
            blocks.append([(wish[index] - offset) * weight, weight, [(node, offset)]])
            while len(blocks) > 1 and blocks[-2][0] / blocks[-2][1] >= blocks[-1][0] / blocks[-1][1]:
                total, count, members = blocks.pop()
                blocks[-1][0] += total
                blocks[-1][1] += count
                blocks[-1][2] += members
        for total, count, members in blocks:
            for node, where in members:
                self.x[node] = total / count + where

    def y(self, node):
        layer = node[2] if isinstance(node[0], tuple) else self.level[node]
        return MARGIN + BOX / 2 + (len(self.rows) - 1 - layer) * LAYER


def average(values, otherwise):
    return sum(values) / len(values) if values else otherwise


def curve(drawing, steps):
    """The path of an arrow: upright at its ends, and through its bends as straight as they lie."""
    own, other = steps[0], steps[-1]
    ends = [(drawing.x[own], drawing.y(own) + drawing.height(own) / 2),
            (drawing.x[other], drawing.y(other) - drawing.height(other) / 2 - 7)]
    places = ends[:1] + [(drawing.x[step], drawing.y(step)) for step in steps[1:-1]] + ends[1:]
    slopes = [(right - left) / (bottom - top)
              for (left, top), (right, bottom) in zip(places, places[2:])]
    upright = any(abs(slope) > STEEPEST for slope in slopes)
    points, lean = ends[:1], [0.0]  # lean: pixels sideways by pixels downward at each point
    for (x, y), slope in zip(places[1:-1], slopes):
        points += [(x, y - BOX * 0.7), (x, y + BOX * 0.7)] if upright else [(x, y)]
        lean += [0.0, 0.0] if upright else [slope]
    points, lean = points + ends[1:], lean + [0.0]
    parts = [f"M{points[0][0]:.1f} {points[0][1]:.1f}"]
    for index, ((x, y), (to_x, to_y)) in enumerate(zip(points, points[1:])):
        reach = (to_y - y) * 0.45
        parts.append(f"C{x + lean[index] * reach:.1f} {y + reach:.1f} "
                     f"{to_x - lean[index + 1] * reach:.1f} {to_y - reach:.1f} {to_x:.1f} {to_y:.1f}")
    return f'<path d="{" ".join(parts)}" marker-end="url(#tip)"/>'


def box(drawing, node):
    fill, frame = COLORS.get(node[0].split("/")[0], ("#eeeeee", "#666666"))
    width, height = drawing.width(node), drawing.height(node)
    x, y = drawing.x[node], drawing.y(node)
    thick = 3 if drawing.marked & set(node) else 1.2
    lines = [f'<rect x="{x - width / 2:.1f}" y="{y - height / 2:.1f}" width="{width:.1f}" '
             f'height="{height}" rx="6" fill="{fill}" stroke="{frame}" stroke-width="{thick}"/>']
    for index, name in enumerate(node):
        base = y + 5 + 16 * (index - (len(node) - 1) / 2)
        lines.append(f'<text x="{x:.1f}" y="{base:.1f}">{html.escape(name)}</text>')
    return "\n".join(lines)


def svg(graph, marked):
    """The picture. `graph`: tuples of names to the tuples that they point to; boxes with a name in
    `marked` have a thick frame."""
    drawing = Drawing(graph, marked)
    width = max(drawing.x[node] + drawing.width(node) / 2 for node in drawing.x) + MARGIN
    height = 2 * MARGIN + BOX + (len(drawing.rows) - 1) * LAYER
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width:.0f}" height="{height}" '
        f'viewBox="0 0 {width:.0f} {height}" font-family="DejaVu Sans, Arial, sans-serif" '
        'font-size="13" text-anchor="middle">',
        '<defs><marker id="tip" viewBox="0 0 8 8" refX="1" refY="4" markerWidth="7" '
        'markerHeight="7" orient="auto"><path d="M0 0L8 4L0 8z" fill="#778"/></marker></defs>',
        f'<rect width="{width:.0f}" height="{height}" fill="#ffffff"/>',
        '<g fill="none" stroke="#778" stroke-width="1.4">',
        *[curve(drawing, steps) for steps in drawing.paths], "</g>", '<g fill="#222">',
        *[box(drawing, node) for row in reversed(drawing.rows) for node in row
          if isinstance(node[0], str)], "</g>", "</svg>", ""])
