#!/usr/bin/env python3
"""Reports in a real browser: Debian's Chromium, driven by playwright.

check_reports.py --laws names what there is to check. check_reports.py PROGRAM LAW: exit code 77 where browser or driver are not there (`make browser` sets them
up). With SCREENSHOTS=FOLDER the pages that are looked at are kept there.
"""

import csv
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
DATA = ROOT / "data"
WIDTHS = (390, 820, 1280)
SKIPPED = 77
PATIENCE = 120  # seconds, on a machine that has other things to do
MOST_SCRIPTING = 2.0  # seconds of processor time; 0.3 where it was measured first
CHROMIUM = shutil.which("chromium")
# Names and values that a page must show and not obey.
HOSTILE = ["</script><script>document.title='run'</script>", "<img src=x onerror=\"document.title='run'\">",
           "\u202egnirts", "a\u200fb", "${alert(1)}", "&lt;b&gt;", "'\"><svg onload=alert(1)>", "@PAYLOAD@"]

LAWS = ("every_page_opens_alone", "documents_show_their_findings", "damaged_documents_are_said_to_be",
        "rankings_are_sorted_and_searched", "curves_are_those_of_the_cases", "descriptions_count_the_missing", "what_if_equals_score", "hostile_names_stay_text",
        "pages_are_accessible", "printed_tables_are_whole", "thousands_of_predictors_stay_fluid",
        "downloads_hold_what_is_shown", "readme_shows_a_page")

PROGRAM = ""


def program(*args, code=0, folder=None, **more):
    done = subprocess.run([PROGRAM, *map(str, args)], cwd=folder, capture_output=True, text=True, **more)
    assert done.returncode == code, f"{args}: exit code {done.returncode}\n{done.stderr}"
    return done


@contextmanager
def browser():
    from playwright.sync_api import sync_playwright
    with sync_playwright() as playwright:
        started = playwright.chromium.launch(executable_path=CHROMIUM, args=["--no-sandbox"])
        try:
            yield started
        finally:
            started.close()


@contextmanager
def opened(started, path, **options):
    """The page, ready; every error of its console and every request beside the file is a failure."""
    troubles = []
    measured = options.pop("measured", False)
    page = started.new_page(viewport={"width": options.pop("width", 1280), "height": 900}, **options)
    page.set_default_timeout(1000 * PATIENCE)
    page.on("console", lambda m: troubles.append(f"console: {m.text}") if m.type in ("error", "warning") else None)
    page.on("pageerror", lambda error: troubles.append(f"error: {error}"))
    page.on("request", lambda r: troubles.append(f"request: {r.url}") if r.url != f"file://{path}" else None)
    if measured:
        page.metrics = page.context.new_cdp_session(page)
        # The time that its thread had, whatever else the machine does.
        page.metrics.send("Performance.enable", {"timeDomain": "threadTicks"})
    page.goto(f"file://{path}")
    until(page, "document.documentElement.dataset.ready === 'yes'", told=troubles)
    yield page
    page.wait_for_timeout(50)
    assert not troubles, f"{path}: {troubles}"
    page.close()


def until(page, condition, told=()):
    """The page's policy forbids what the driver's own waiting does: to evaluate texts."""
    end = time.monotonic() + PATIENCE
    while not page.evaluate(condition):
        assert not told and time.monotonic() < end, f"never: {condition} {told}"
        page.wait_for_timeout(10)


def all_rows(page, n):
    until(page, f"document.querySelectorAll('table.ranking tbody tr').length === {n}")


def reports(folder):
    """One of each kind, by name."""
    folder = Path(folder)
    penguins, state = DATA / "penguins.csv", folder / "model.bin"
    html = ("--format", "html", "--quiet", "-o")
    program("rank", DATA / "biopsies.csv", "diagnosis", *html, folder / "rank.html")
    program("rank", penguins, "body_mass_g", "--schema", DATA / "penguins.schema.json", *html, folder / "rank-scale.html")
    program("model", penguins, "species", *html, folder / "model.html", "--save-model", state)
    program("run", "--data", penguins, *html, folder / "run.html", "-c",
            "SELECTPRED species BY island sex WITH bill_length_mm body_mass_g /PLOT SUMMARY.\nNAIVEBAYES species.")
    program("describe", penguins, *html, folder / "describe.html")
    program("inspect", state, *html, folder / "inspect.html")
    program("score", penguins, "--model", state, "--save-data", folder / "scored.csv", *html, folder / "score.html")
    program("evaluate", penguins, "--model", state, *html, folder / "evaluate.html")
    return {path.stem: path for path in sorted(folder.glob("*.html"))}


def payload_of(path):
    return json.loads(path.read_text().split('id="payload">')[1].split("</script>")[0])


def keep(page, name):
    folder = os.environ.get("SCREENSHOTS")
    if folder:
        Path(folder).mkdir(parents=True, exist_ok=True)
        page.screenshot(path=f"{folder}/{name}.png", full_page=True)


def every_page_opens_alone(folder, started):
    """No error, no request, nothing that could make one, and no page wider than the screen."""
    for name, path in reports(folder).items():
        assert path.stat().st_size < 1_500_000, f"{name}: {path.stat().st_size} bytes"
        for width in WIDTHS:
            with opened(started, path, width=width) as page:
                if name == "run":
                    until(page, "document.querySelector('.drawn svg') !== null")
                shown = page.evaluate("[document.documentElement.scrollWidth, innerWidth]")
                assert shown[0] <= shown[1], f"{name} at {width}: {shown}"
                assert page.locator("h2").count() > 0, name
                keep(page, f"{name}-{width}")
        page = started.new_page()
        page.goto(f"file://{path}")
        refused = page.evaluate("fetch('https://example.invalid/').then(() => 'sent', (error) => error.name)")
        added = page.evaluate("""(() => {
          const script = document.createElement('script');
          script.textContent = 'window.ran = true';
          document.body.append(script);
          document.body.insertAdjacentHTML('beforeend', '<p onclick="window.ran = true"></p>');
          document.body.lastChild.click();
          return window.ran === undefined;
        })()""")
        assert (refused, added) == ("TypeError", True), (name, refused, added)
        page.close()


def rankings_are_sorted_and_searched(folder, started):
    path = Path(folder) / "rank.html"
    program("rank", DATA / "biopsies.csv", "diagnosis", "-o", path)
    listed = list(csv.DictReader(program("rank", DATA / "biopsies.csv", "diagnosis", "--format", "csv").stdout.splitlines()))
    with opened(started, path) as page:
        all_rows(page, 30)
        names = lambda: page.locator("table.ranking tbody th").all_inner_texts()
        assert names() == [row["predictor"] for row in listed]
        page.locator("table.ranking thead button", has_text="Effect").click()
        all_rows(page, 30)
        assert names() == [row["predictor"] for row in sorted(listed, key=lambda row: -abs(float(row["effect_size"])))]
        page.locator("table.ranking thead button", has_text="Predictor").click()
        all_rows(page, 30)
        assert names() == sorted(row["predictor"] for row in listed)
        assert page.locator("table.ranking th[aria-sort=ascending]").inner_text().startswith("Predictor")
        page.get_by_label("Search").fill("worst_c")
        assert names() == sorted(row["predictor"] for row in listed if "worst_c" in row["predictor"])
        page.get_by_label("Search").fill("")
        page.get_by_label("adjusted p below .05 only").check()
        all_rows(page, 25)
        page.locator("table.ranking thead button", has_text="Rank").click()
        until(page, "document.querySelector('table.ranking tbody td').textContent === '1'")
        for place in range(20):
            page.locator("table.ranking tbody button.name").nth(place).click()
            shown = page.locator(".beside > h3").inner_text()
            assert shown == listed[place]["predictor"], (place, shown)
            assert page.locator(".beside figure svg").count() == 1, shown
        # By keys alone: the focus is on the name of what is shown; the next button goes on.
        page.keyboard.press("Tab"), page.keyboard.press("Tab"), page.keyboard.press("Enter")
        assert page.locator(".beside > h3").inner_text() == listed[20]["predictor"]


def numbers_below(page, title):
    """The rows of numbers under the figure of a title."""
    drawn = page.locator("figure", has=page.get_by_role("heading", name=title, exact=True))
    drawn.locator("summary").click()
    drawn.locator("details tbody tr").first.wait_for()  # they come with the event that tells of the opening
    return drawn.locator("details tbody tr").evaluate_all(
        "(rows) => rows.map((row) => [...row.querySelectorAll('th, td')].map((cell) => Number(cell.textContent.replaceAll(',', ''))))")


def descriptions_count_the_missing(folder, started):
    """Cells without a number, however they say so, and codes that are declared; nothing else is lost."""
    folder = Path(folder)
    (folder / "gaps.csv").write_text("x,code,none\n" + "".join(
        f"{cell},{-9 if i % 4 == 0 else i + 0.5},\n" for i, cell in enumerate(["NaN", "", "inf", "-inf", "NA", 1.5, 2.5, 4] * 5)))
    program("describe", folder / "gaps.csv", "--missing", "code=-9", "--format", "html", "--quiet", "-o", folder / "gaps.html")
    with opened(started, folder / "gaps.html") as page:
        text = page.locator("body").inner_text()
        assert "NaN" not in text and "undefined" not in text and "Infinity" not in text, text
        cards = {card.split("\n")[0]: card for card in page.locator("figure").all_inner_texts()}
        assert "40 cases" in text and "15 values, 3 different; 25 missing" in cards["x"], cards["x"]
        assert "30 values" in cards["code"] and "10 missing" in cards["code"], cards["code"]
        assert "0 values, 0 different; 40 missing" in cards["none"], cards["none"]
        assert "25 (62.5%)" in text and "10 (25.0%)" in text and "40 (100.0%)" in text, text


def curves_are_those_of_the_cases(folder, started):
    """Calibration, gain, lift and area of the page, from the test cases as `score` predicts them."""
    folder, rows = Path(folder), list(csv.DictReader(open(DATA / "biopsies.csv")))
    with open(folder / "marked.csv", "w", newline="") as file:
        writer = csv.DictWriter(file, [*rows[0], "trains"])
        writer.writeheader()
        writer.writerows({**row, "trains": int(i % 5 < 2)} for i, row in enumerate(rows))
    program("model", folder / "marked.csv", "diagnosis", "--training-column", "trains", "--quiet", "-o", folder / "m.html", "--save-model", folder / "m.bin")
    program("score", folder / "marked.csv", "--model", folder / "m.bin", "--save-data", folder / "out.csv", "--force")
    findings = payload_of(folder / "m.html")["runs"][0]["findings"]
    k = min(range(2), key=lambda k: findings["target"]["counts"][k])  # the one that the page begins with
    name = findings["target"]["categories"][k]
    cases = sorted((float(row[f"PredictedProbability_{k + 1}"]), row["diagnosis"] == name)
                   for row in csv.DictReader(open(folder / "out.csv")) if row["trains"] == "0")
    of = sum(hit for _, hit in cases)
    others = [p for p, hit in cases if not hit]
    area = sum((p > q) + (p == q) / 2 for p, hit in cases if hit for q in others) / of / len(others)
    assert abs(findings["curves"]["test"]["areas"][k] - area) < 1e-12, area
    with opened(started, folder / "m.html") as page:
        assert f"Area {area:.3f}:".replace(" 0.", " .") in page.locator("main").inner_text(), area
        groups, at = numbers_below(page, "Calibration"), 0
        assert 2 < len(groups) <= 10 and sum(group[2] for group in groups) == len(cases), groups
        for predicted, observed, n in groups:
            group, at = cases[at : at + int(n)], at + int(n)
            assert abs(predicted - sum(p for p, _ in group) / n) < 1e-3, (predicted, group)
            assert abs(observed - sum(hit for _, hit in group) / n) < 1e-3, (observed, group)
        best = [hit for _, hit in reversed(cases)]
        gain, lift = numbers_below(page, "Gain"), numbers_below(page, "Lift")
        assert len(gain) > 20 and len(lift) > 20
        for share, found in gain:
            assert abs(found - sum(best[: round(share * len(best))]) / of) < 1e-3, (share, found)
        for share, times in lift:
            n = round(share * len(best))
            assert abs(times - sum(best[:n]) / n / (of / len(best))) < 2e-3, (share, times)


def what_if_equals_score(folder, started):
    """A hundred random cases, some values of which are missing, beyond the range or unknown."""
    folder = Path(folder)
    chosen = random.Random(5)
    program("model", DATA / "penguins.csv", "species", "--format", "html", "--quiet", "-o", folder / "m.html",
            "--save-model", folder / "m.bin", "--test", 0)
    inputs = payload_of(folder / "m.html")["runs"][0]["findings"]["inputs"]
    assert any(i["scale"] for i in inputs) and not all(i["scale"] for i in inputs), inputs
    cases = []
    for _ in range(100):
        case = {}
        for item in inputs:
            span = (item["high"] - item["low"]) if item["scale"] else 0
            values = ([str(round(item["low"] - span / 5 + 1.4 * span * chosen.random(), 2)), str(chosen.choice(item["cuts"]))]
                      if item["scale"] else item["categories"])
            case[item["name"]] = "" if chosen.random() < 0.15 else chosen.choice(values)
        cases.append(case)
    with open(folder / "cases.csv", "w", newline="") as file:
        writer = csv.DictWriter(file, list(cases[0]))
        writer.writeheader()
        writer.writerows(cases)
    program("score", folder / "cases.csv", "--model", folder / "m.bin", "--save-data", folder / "out.parquet")
    program("score", folder / "cases.csv", "--model", folder / "m.bin", "--save-data", folder / "out.csv")
    scored = list(csv.DictReader(open(folder / "out.csv")))
    worst = 0.0
    with opened(started, folder / "m.html") as page:
        for case, row in zip(cases, scored):
            for item in inputs:
                field = page.locator(".inputs").get_by_label(item["name"], exact=True)
                if item["scale"]:
                    field.fill(case[item["name"]])
                else:
                    field.select_option(label=case[item["name"]] or "(not known)")
            shown = page.evaluate("Object.fromEntries([...document.querySelectorAll('[data-probability]')].map("
                                  "(row) => [row.dataset.class, Number(row.dataset.probability)]))")
            for k, probability in shown.items():
                worst = max(worst, abs(probability - float(row[f"PredictedProbability_{int(k) + 1}"])))
    assert worst < 1e-9, worst


def documents_show_their_findings(folder, started):
    """A document of a verb is the same page as the verb's own, and one of commands says what it lacks."""
    folder, penguins = Path(folder), DATA / "penguins.csv"
    program("model", penguins, "species", "--quiet", "--save-model", folder / "m.bin")
    jobs = {"rank": ("rank", penguins, "species"), "model": ("model", penguins, "species"), "describe": ("describe", penguins),
            "evaluate": ("evaluate", penguins, "--model", folder / "m.bin")}
    for name, job in jobs.items():
        program(*job, "--quiet", "--format", "html", "-o", folder / f"{name}.html")
        program(*job, "--quiet", "--format", "json", "-o", folder / f"{name}.json")
        program("view", folder / f"{name}.json", "-o", folder / f"{name}-seen.html")
        texts = []
        for path in (folder / f"{name}.html", folder / f"{name}-seen.html"):
            with opened(started, path) as page:
                # Below it, a document has tables for programs as well.
                texts.append(page.locator("body").inner_text().split("Tables of the command")[0])
        assert texts[0] == texts[1], (name, texts)
    program("run", "--data", penguins, "--quiet", "--format", "json", "-o", folder / "run.json", "-c", "SELECTPRED species /PLOT SUMMARY.")
    program("view", folder / "run.json", "-o", folder / "run.html")
    with opened(started, folder / "run.html") as page:
        until(page, "document.querySelectorAll('.drawn svg').length === 1")
        assert "tables of the command alone" in page.locator("main").inner_text()


def damage(document, drawn):
    """Something of its first run, at whatever depth, is lost or another thing."""
    place = document["runs"][0]
    while True:
        key = drawn.choice(list(place) if isinstance(place, dict) else range(len(place)))
        if not isinstance(place[key], (dict, list)) or not place[key] or drawn.random() < 0.2:
            break
        place = place[key]
    place[key] = drawn.choice([None, [], {}, 0, -1e308, 1e308, HOSTILE[1], [HOSTILE[0]], {"signal": "alert(1)"}, True])


def damaged_documents_are_said_to_be(folder, started):
    """Whatever a document lacks or holds instead: a refusal, or a page that opens and runs nothing of it."""
    folder, drawn, shown = Path(folder), random.Random(3), 0
    jobs = {"run": ("run", "--data", DATA / "penguins.csv", "-c", "SELECTPRED species /PLOT SUMMARY."),
            "rank": ("rank", DATA / "penguins.csv", "species"), "model": ("model", DATA / "penguins.csv", "species")}
    for name, job in jobs.items():
        program(*job, "--quiet", "--format", "json", "-o", folder / f"{name}.json")
        for i in range(3):
            document = json.loads((folder / f"{name}.json").read_text())
            for _ in range(1 + i):
                damage(document, drawn)
            (folder / "damaged.json").write_text(json.dumps(document))
            done = subprocess.run([PROGRAM, "view", "damaged.json", "-o", "damaged.html"], cwd=folder, capture_output=True, text=True)
            assert done.returncode in (0, 3), (done.returncode, done.stderr, document)
            if done.returncode == 3:
                continue
            shown += 1
            with opened(started, folder / "damaged.html") as page:
                page.evaluate("document.querySelectorAll('details').forEach((d) => { d.open = true; })")
                assert page.title() == "penguins.csv", page.title()
                assert page.locator("img, main script, iframe, object").count() == 0, document
    assert shown > 3, shown


def hostile_names_stay_text(folder, started):
    folder = Path(folder)
    with open(folder / "hostile.csv", "w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(["y", *HOSTILE])
        for i in range(60):
            writer.writerow([HOSTILE[i % 3], *(HOSTILE[(i + j * (i % 5)) % 8] for j in range(len(HOSTILE)))])
    options = ("--format", "html", "--quiet", "-o")
    program("rank", "hostile.csv", "y", *options, folder / "a.html", folder=folder)
    program("model", "hostile.csv", "y", *options, folder / "b.html", folder=folder)
    program("describe", "hostile.csv", *options, folder / "c.html", folder=folder)
    program("run", "--data", "hostile.csv", *options, folder / "d.html", "-c", "SELECTPRED y /PLOT SUMMARY.", folder=folder)
    for name in "abcd":
        with opened(started, folder / f"{name}.html") as page:
            page.wait_for_timeout(300)
            assert page.title() == "hostile.csv", page.title()
            assert page.locator("img, main script, iframe, object").count() == 0, name
            text = page.locator("main").inner_text()
            assert "\u202e" not in text, name
            if name == "a":
                assert HOSTILE[0] in text and HOSTILE[1] in text, text
                page.get_by_role("button", name=HOSTILE[0], exact=True).click()
                assert page.locator(".beside > h3").inner_text() == HOSTILE[0]


def pages_are_accessible(folder, started):
    from axe_core_python.sync_playwright import Axe
    source = Axe().axe_script
    for name, path in reports(folder).items():
        for scheme in ("light", "dark"):
            with opened(started, path, color_scheme=scheme) as page:
                page.evaluate("document.querySelectorAll('details').forEach((d) => { d.open = true; })")
                page.wait_for_timeout(300)
                page.evaluate(source)
                found = page.evaluate("axe.run().then((result) => result.violations.map((v) => [v.id, v.nodes.slice(0, 3).map((n) => n.html)]))")
                assert not found, f"{name}, {scheme}: {json.dumps(found, indent=1)}"
                keep(page, f"{name}-{scheme}")


def printed_tables_are_whole(folder, started):
    """On A4 across, every table ends before the paper does."""
    for name, path in reports(folder).items():
        with opened(started, path, width=1032) as page:
            page.evaluate("document.querySelectorAll('details').forEach((d) => { d.open = true; })")
            page.wait_for_timeout(200)
            page.emulate_media(media="print")
            wide = page.evaluate("[...document.querySelectorAll('table, svg')].filter((t) => t.getBoundingClientRect().right > 1033)"
                                 ".map((t) => [t.className, t.getBoundingClientRect().right, t.textContent.slice(0, 60)])")
            assert not wide, f"{name}: {wide}"
            hidden = page.evaluate("[...document.querySelectorAll('.scroll')].filter((t) => t.scrollHeight > t.clientHeight + 2).length")
            assert hidden == 0, f"{name}: {hidden}"
            assert page.pdf(prefer_css_page_size=True).startswith(b"%PDF"), name


def thousands_of_predictors_stay_fluid(folder, started):
    """2,000 predictors of a target of 3 classes: little scripting opens the page, and no row is ever blank."""
    folder = Path(folder)
    drawn = random.Random(1)
    with open(folder / "wide.csv", "w", encoding="utf-8") as file:
        file.write("y," + ",".join(f"v{j}" for j in range(2000)) + "\n")
        for i in range(300):
            k = i % 3
            cells = (drawn.choice("abcdef") if j % 4 == 0 else f"{drawn.gauss(k * (j % 7) / 10, 1):.3f}" for j in range(2000))
            file.write("klm"[k] + "," + ",".join(cells) + "\n")
    program("rank", folder / "wide.csv", "y", "--quiet", "-o", folder / "wide.html")
    durations = []
    for _ in range(3):
        with opened(started, folder / "wide.html", measured=True) as page:
            all_rows(page, 2000)
            metrics = {m["name"]: m["value"] for m in page.metrics.send("Performance.getMetrics")["metrics"]}
            durations.append(metrics["ScriptDuration"])
            empty = page.evaluate("""(() => {
              const box = document.querySelector('table.ranking').parentElement;
              let blank = 0;
              for (let y = 0; y < box.scrollHeight; y += 700) {
                box.scrollTop = y;
                const {left, top} = box.getBoundingClientRect();
                const row = document.elementFromPoint(left + 150, Math.min(innerHeight - 5, top + 200))?.closest('tr');
                if (row && row.textContent.trim() === '') ++blank;
              }
              return blank;
            })()""")
            assert empty == 0, empty
    print(f"scripting of 2,000 predictors: {min(durations):.2f} s")
    assert min(durations) < MOST_SCRIPTING, durations


def downloads_hold_what_is_shown(folder, started):
    path = Path(folder) / "rank.html"
    program("rank", DATA / "biopsies.csv", "diagnosis", "-o", path)
    with opened(started, path) as page:
        all_rows(page, 30)
        with page.expect_download() as download:
            page.get_by_role("button", name="Download ranking as CSV").click()
        rows = list(csv.DictReader(open(download.value.path())))
        assert len(rows) == 30 and rows[0]["name"] == "worst_concave_points", rows[0]
        with page.expect_download() as download:
            page.get_by_role("button", name="Download Strength against certainty as SVG").click()
        drawing = Path(download.value.path()).read_text()
        assert drawing.startswith("<svg") and drawing.count("<circle") == 30 and "var(--" not in drawing


def readme_shows_a_page(folder, started):
    """Keeps the picture of the documents, in SCREENSHOTS."""
    path = Path(folder) / "rank.html"
    program("rank", DATA / "biopsies.csv", "diagnosis", "-o", path)
    with opened(started, path) as page:
        all_rows(page, 30)
        page.set_viewport_size({"width": 1280, "height": 600})
        page.evaluate("document.querySelector('.two').previousElementSibling.scrollIntoView()")
        target = Path(os.environ.get("SCREENSHOTS", folder)) / "report.png"
        target.parent.mkdir(parents=True, exist_ok=True)
        page.screenshot(path=str(target))
        assert target.stat().st_size < 150_000, target.stat().st_size


def main() -> int:
    global PROGRAM
    if sys.argv[1] == "--laws":
        print("\n".join(LAWS))
        return 0
    PROGRAM, law = str(Path(sys.argv[1]).resolve()), globals()[sys.argv[2]]
    try:
        import playwright  # noqa: F401
    except ImportError:
        print("skipped: playwright is not there (make browser)")
        return SKIPPED
    if CHROMIUM is None:
        print("skipped: chromium is not there (make browser)")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder, browser() as started:
        law(folder, started)
    return 0


if __name__ == "__main__":
    sys.exit(main())
