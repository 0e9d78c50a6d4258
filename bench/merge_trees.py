#!/usr/bin/env python3
"""Merge trees for the pieces of a table in very many parts (docs/scale.md), simulated.

Each part leaves one piece. In every round a worker fetches a group of pieces, merges them into one and keeps
it; the driver fetches what is left when a round leaves no more than the fan-in. Rounds wait for their slowest
group. Prints rounds, seconds and the most bytes that a worker and the driver hold.

    bench/merge_trees.py --parts 1000000 --piece 2000000
    bench/merge_trees.py --parts 1000000 --piece 2000000 --driver-alone

The rates are those of docs/scale.md; give your own.
"""

import argparse
import heapq
import random


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--parts", type=int, default=1_000_000)
    parser.add_argument("--piece", type=float, default=2e6, help="bytes of a piece")
    parser.add_argument("--grow", type=float, default=0.0,
                        help="share of a piece that merging adds instead of summing (new categories)")
    parser.add_argument("--fan", type=int, default=64, help="pieces that are merged at a time")
    parser.add_argument("--workers", type=int, default=1000)
    parser.add_argument("--merge-rate", type=float, default=350e6, help="bytes merged a second")
    parser.add_argument("--network", type=float, default=200e6, help="bytes a second of a worker")
    parser.add_argument("--latency", type=float, default=0.02, help="seconds a fetch or a task takes beside")
    parser.add_argument("--driver-alone", action="store_true", help="no tree: all pieces go to the driver")
    parser.add_argument("--seed", type=int, default=1)
    return parser.parse_args()


def merged_size(sizes: list[float], grow: float) -> float:
    """Cells that all have are summed; what is new in each is added."""
    largest = max(sizes)
    return largest + grow * (sum(sizes) - largest)


def seconds_of(sizes: list[float], asked: argparse.Namespace, chance: random.Random) -> float:
    """One group: fetched and merged, now and then by a worker that is busy with something else."""
    work = sum(sizes) / asked.network + sum(sizes) / asked.merge_rate + asked.latency * (1 + len(sizes) / 16)
    return work * (3.0 if chance.random() < 0.01 else 1.0)


def round_of(pieces: list[float], asked: argparse.Namespace,
             chance: random.Random) -> tuple[list[float], float, float]:
    """The pieces that a round leaves, its seconds, and the most bytes that one of its workers holds."""
    groups = [pieces[i:i + asked.fan] for i in range(0, len(pieces), asked.fan)]
    free = [0.0] * min(asked.workers, len(groups))
    most = 0.0
    for group in groups:
        begin = heapq.heappop(free)
        heapq.heappush(free, begin + seconds_of(group, asked, chance))
        # Pieces are merged as they come: the sum so far and one more.
        most = max(most, merged_size(group, asked.grow) + max(group))
    return [merged_size(group, asked.grow) for group in groups], max(free), most


def main() -> None:
    asked = arguments()
    chance = random.Random(asked.seed)
    pieces = [asked.piece] * asked.parts
    total = 0.0
    print(f"{'round':>6} {'pieces':>9} {'bytes each':>11} {'seconds':>9} {'most held':>10}")
    number = 0
    while not asked.driver_alone and len(pieces) > asked.fan:
        number += 1
        before = len(pieces)
        pieces, seconds, held = round_of(pieces, asked, chance)
        total += seconds
        print(f"{number:>6} {before:>9} {max(pieces):>11.3g} {seconds:>9.1f} {held:>10.3g}")
    seconds = seconds_of(pieces, asked, random.Random(0))
    held = merged_size(pieces, asked.grow) + max(pieces)
    print(f"{'driver':>6} {len(pieces):>9} {merged_size(pieces, asked.grow):>11.3g} {seconds:>9.1f} {held:>10.3g}")
    print(f"all in {total + seconds:.1f} s")


if __name__ == "__main__":
    main()
