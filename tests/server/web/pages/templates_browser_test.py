"""A template is filled in in a browser: the picture follows, faults are told, a plate and a table are printed.

Usage: templates_browser_test.py RASTREL [--pictures DIRECTORY]. Ends with 77 where there is no browser. With a directory
it leaves pictures of the pages there: light, dark, and as wide as a phone.
"""
import json
import os
import sys
import time

from browser_test import LIMIT, STATE, check_form, ready, run_in_browser, take_pictures

BADGE = """<ABB><ENGRAVINGTEMPLATE><PLATES/><PLATE><COLOR>Gold</COLOR><WIDTH>{Width}</WIDTH><HEIGHT>1</HEIGHT>
<TEXTCOLOR>Black</TEXTCOLOR><TEXTFRAME>5</TEXTFRAME><TEXT line="1" data="{Name}"><FONT name="DejaVuSans.ttf"
size="0.3"/></TEXT><TEXT line="2" data="{Department}"><FONT name="DejaVuSans.ttf" size="0.18"/></TEXT></PLATE>
</ENGRAVINGTEMPLATE></ABB>
"""
HOSTILE = "<img src=x onerror=window.hacked=1>{0}.xml"
PICTURE = "document.querySelector('#picture img')"


def field(name):
    return f"document.querySelector('input[name=\"value.{name}\"]')"


def type_in(browser, name, text):
    browser.run(f"""(() => {{
      const field = {field(name)};
      field.value = {json.dumps(text)};
      field.dispatchEvent(new Event('input', {{ bubbles: true }}));
    }})()""")


def note(name):
    return f"document.getElementById({field(name)}.id + '-note').textContent"


def size(browser):
    return browser.run(f"[{PICTURE}.naturalWidth, {PICTURE}.naturalHeight]")


def wait_for_size(browser, width, height):
    """Pictures are no finer than 300 per inch, and fit into 1000 pixels."""
    browser.wait(f"{PICTURE}?.naturalWidth === {width} && {PICTURE}.naturalHeight === {height}",
                 f"a picture of {width} by {height}", LIMIT)


def fill_in(browser, shop, pictures):
    browser.open(f"{shop.address}/templates?again")
    ready(browser, "the list")
    check_form(browser, "the list of templates")
    assert browser.run("document.querySelectorAll('ul.templates a').length") == 2
    browser.wait("[...document.querySelectorAll('.sample img')].filter((one) => one.naturalWidth === 300).length === 2",
                 "the samples, of one by one inch", LIMIT)
    assert browser.run("window.hacked") is None
    take_pictures(browser, pictures, "templates")
    browser.run("document.querySelector('a[href=\"/templates/badge.xml\"]').click()")
    browser.wait("location.pathname === '/templates/badge.xml' && document.body.dataset.ready === 'yes'", "the form",
                 LIMIT)
    check_form(browser, "the empty form")

    # The picture follows: three by one inch, then two by one.
    type_in(browser, "Name", "Ada Byron")
    type_in(browser, "Department", "Paint & <Finish>")
    type_in(browser, "Width", "3")
    wait_for_size(browser, 900, 300)
    browser.wait("document.getElementById('picture-state').textContent.includes('76.2 × 25.4 mm')", "its size", LIMIT)
    check_form(browser, "the form")
    take_pictures(browser, pictures, "template")
    type_in(browser, "Width", "2")
    wait_for_size(browser, 600, 300)

    # Faults are told beside their fields, for people who see them and for those who don't.
    type_in(browser, "Width", "wide")
    browser.wait(f"{note('Width')} === 'Give a number, with a point, such as 2.5.'", "the fault of a number", LIMIT)
    assert browser.run(f"{field('Width')}.getAttribute('aria-invalid')") == "true"
    type_in(browser, "Width", "3")
    type_in(browser, "Name", "Bartholomew Featherstonehaugh-Cholmondeley")
    browser.wait(f"{note('Name')}.endsWith('of its room and is squeezed.')", "the text without room", LIMIT)
    assert browser.run(f"{note('Width')}") == ""
    take_pictures(browser, pictures, "template-notes")

    # The Enter key shows and prints nothing.
    browser.run(f"{field('Name')}.focus()")
    type_in(browser, "Name", "Ada Byron")
    browser.press("Enter", 13)
    browser.wait(f"{note('Name')} === ''", "the picture after the Enter key", LIMIT)
    assert shop.get("jobs")["total"] == 0

    browser.run("document.querySelector('#plate select[name=mode]').value = 'TIFF/tiff default.ps'")
    browser.run("document.querySelector('#plate select[name=device]').value = 'Plotter'")
    browser.run("document.querySelector('#plate button[value=print]').click()")
    browser.wait(f"location.pathname.startsWith('/jobs/') && {STATE} === 'done'", "the end of the job", LIMIT)
    job = shop.get("jobs")["jobs"][0]
    assert (job["work"], job["title"], job["pages"]) == ("merge", "badge: Ada Byron", 1), job
    # Three by one inch at 72 per inch.
    described = shop.get(f"jobs/{job['id']}/pages")["pages"]
    assert [(one["width"], one["height"]) for one in described] == [(216, 72)], described


def bring_table(browser, shop, place):
    browser.open(f"{shop.address}/templates/badge.xml")
    ready(browser, "the form")
    table = os.path.join(place, "names.csv")
    with open(table, "w", encoding="utf-8") as file:
        file.write("Name,Department,Width\nAda,A,3\nEve,E,3\n")
    browser.choose_file("form.table input[type=file]", table)
    for name, value in (("mode", "TIFF/tiff default.ps"), ("device", "Plotter"), ("blank", "plate")):
        browser.run(f"document.querySelector('form.table [name={name}]').value = '{value}'")
    browser.run("document.querySelector('form.table button').click()")
    browser.wait(f"location.pathname.startsWith('/jobs/') && {STATE} === 'done'", "the end of the table's job", LIMIT)
    job = shop.get("jobs")["jobs"][0]
    assert (job["work"], job["title"], job["pages"]) == ("merge", "names.csv", 2), job


def without_scripts(browser, shop, pictures):
    browser.surroundings(scripts=False)
    browser.open(f"{shop.address}/templates/badge.xml")

    def source():
        root = browser.call("DOM.getDocument")["root"]["nodeId"]
        return browser.call("DOM.getOuterHTML", nodeId=root)["outerHTML"]

    def send(values, button):
        # By the browser's own hand: the page's scripts do not run.
        root = browser.call("DOM.getDocument")["root"]["nodeId"]
        for selector, value in values.items():
            node = browser.call("DOM.querySelector", nodeId=root, selector=selector)["nodeId"]
            browser.call("DOM.setAttributeValue", nodeId=node, name="value", value=value)
        before = browser.call("Page.getFrameTree")["frameTree"]["frame"]["loaderId"]
        node = browser.call("DOM.querySelector", nodeId=root, selector=button)["nodeId"]
        browser.call("DOM.focus", nodeId=node)
        browser.call(
            "Input.dispatchKeyEvent", type="keyDown", key="Enter", windowsVirtualKeyCode=13, text="\r")
        browser.call("Input.dispatchKeyEvent", type="keyUp", key="Enter", windowsVirtualKeyCode=13)
        for _ in range(600):
            if browser.call("Page.getFrameTree")["frameTree"]["frame"]["loaderId"] != before:
                break
            time.sleep(0.1)
        else:
            raise AssertionError("the form was not sent")
        browser.wait("document.readyState === 'complete'", "the answer")

    send({"#field-1": "wide", "#field-2": "Ada \"B\" <i>"}, "button[value=show]")
    text = source()
    assert "Give a number, with a point" in text and "Ada &quot;B&quot; &lt;i&gt;" in text, text
    send({"#field-1": "3"}, "button[value=show]")
    text = source()
    assert "data:image/png;base64," in text and "Ada &quot;B&quot; &lt;i&gt;" in text, text
    browser.surroundings()
    browser.surroundings(scripts=False)
    take_pictures(browser, pictures, "template-without-scripts")
    browser.surroundings(scripts=False)
    before = shop.get("jobs")["total"]
    send({}, "button[value=print]")
    assert shop.get("jobs")["total"] == before + 1
    assert shop.get("jobs")["jobs"][0]["title"] == 'badge: Ada "B" <i>'
    browser.surroundings()


def sign_in_without_scripts(browser, shop):
    browser.surroundings(scripts=False)
    browser.open(shop.address + "/templates")
    assert browser.run("location.pathname") == "/login"
    browser.run(f"document.querySelector('input[name=token]').value = '{shop.token}'")
    browser.run("document.querySelector('input[name=token]').form.requestSubmit()")
    browser.wait("location.pathname === '/templates'", "the list after the sign-in", LIMIT)
    browser.surroundings()


def put_templates(place):
    templates = os.path.join(place, "root", "templates")
    os.makedirs(templates)
    for name in ("badge.xml", HOSTILE):
        with open(os.path.join(templates, name), "w", encoding="utf-8") as file:
            file.write(BADGE)


def work(browser, shop, place, pictures):
    put_templates(place)
    sign_in_without_scripts(browser, shop)
    fill_in(browser, shop, pictures)
    bring_table(browser, shop, place)
    without_scripts(browser, shop, pictures)
    # The form with a fault, which was sent without scripts, is answered with 400.
    faults = [one for one in browser.messages if "400 (Bad Request)" not in one]
    assert not faults and len(browser.messages) == 1, browser.messages


if __name__ == "__main__":
    sys.exit(run_in_browser(work, "rastrel-templates-"))
