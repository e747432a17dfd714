"""A browser without a window, driven over a pipe. The standard library alone."""

import base64
import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import time

PROGRAMS = ('chromium', 'chromium-browser', 'google-chrome')


def program():
    """Path of a browser, or None."""
    return next((path for path in map(shutil.which, PROGRAMS) if path), None)


class BrowserError(Exception):
    """What the browser refused, or a script's own failure."""


class Browser:
    """One page of a browser with a profile of its own. Use it in a `with`."""

    def __init__(self, language='en', limit=60):
        self._limit = limit
        self._profile = tempfile.mkdtemp(prefix='rastrel-browser-')
        to_read, self._to = os.pipe()
        self._from, from_write = os.pipe()

        def place():
            # The browser reads commands at descriptor 3, and answers at 4.
            spare = os.dup(from_write)
            os.dup2(to_read, 3)
            os.dup2(spare, 4)

        self._process = subprocess.Popen(
            [program(), '--headless=new', '--no-sandbox', '--disable-gpu', '--no-first-run',
             '--disable-dev-shm-usage', '--disable-background-networking', '--disable-sync',
             '--disable-component-update', '--hide-scrollbars', f'--lang={language}',
             f'--accept-lang={language}', '--remote-debugging-pipe',
             f'--user-data-dir={self._profile}', 'about:blank'],
            preexec_fn=place, pass_fds=(3, 4), start_new_session=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_read)
        os.close(from_write)
        self._buffer = b''
        self._number = 0
        self.messages = []  # of the page's console, and failures of its scripts
        self._session = None
        target = next(one for one in self.call('Target.getTargets')['targetInfos']
                      if one['type'] == 'page')
        self._session = self.call('Target.attachToTarget', targetId=target['targetId'],
                                  flatten=True)['sessionId']
        for domain in ('Page', 'Runtime', 'Log', 'DOM'):
            self.call(f'{domain}.enable')

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            os.killpg(self._process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self._process.wait()
        os.close(self._to)
        os.close(self._from)
        shutil.rmtree(self._profile, ignore_errors=True)

    def call(self, method, **parameters):
        """Calls a method of the browser's protocol and returns its result."""
        self._number += 1
        message = {'id': self._number, 'method': method, 'params': parameters}
        if self._session:
            message['sessionId'] = self._session
        os.write(self._to, json.dumps(message).encode() + b'\0')
        until = time.monotonic() + self._limit
        while True:
            answer = self._next(until)
            if answer.get('id') == self._number:
                if 'error' in answer:
                    raise BrowserError(f"{method}: {answer['error'].get('message')}")
                return answer['result']
            self._note(answer)

    def _next(self, until):
        while b'\0' not in self._buffer:
            left = until - time.monotonic()
            if left <= 0 or not select.select([self._from], [], [], left)[0]:
                raise BrowserError('the browser does not answer')
            piece = os.read(self._from, 1 << 20)
            if not piece:
                raise BrowserError('the browser has ended')
            self._buffer += piece
        text, self._buffer = self._buffer.split(b'\0', 1)
        return json.loads(text)

    def _note(self, event):
        parameters = event.get('params', {})
        if event.get('method') == 'Runtime.exceptionThrown':
            details = parameters['exceptionDetails']
            self.messages.append(details.get('exception', {}).get('description', details['text']))
        elif event.get('method') == 'Log.entryAdded' and parameters['entry']['level'] == 'error':
            entry = parameters['entry']
            self.messages.append(f"{entry['text']} {entry.get('url', '')}")

    def run(self, script):
        """Value of an expression in the page; a promise is waited for."""
        answer = self.call('Runtime.evaluate', expression=script, awaitPromise=True,
                           returnByValue=True, userGesture=True)
        if 'exceptionDetails' in answer:
            details = answer['exceptionDetails']
            raise BrowserError(details.get('exception', {}).get('description', details['text']))
        return answer['result'].get('value')

    def wait(self, script, what, seconds=60):
        """Waits until an expression is true."""
        until = time.monotonic() + seconds
        while time.monotonic() < until:
            try:
                value = self.run(f'!!({script})')
            except BrowserError:
                value = None  # between two pages
            if value:
                return value
            time.sleep(0.1)
        raise BrowserError(f'did not come: {what}')

    def open(self, address):
        """Opens an address other than the present one, and waits until all of it is there."""
        before = self.call('Page.getFrameTree')['frameTree']['frame']['loaderId']
        self.call('Page.navigate', url=address)
        until = time.monotonic() + self._limit
        while self.call('Page.getFrameTree')['frameTree']['frame']['loaderId'] == before:
            if time.monotonic() > until:
                raise BrowserError(f'did not come: {address}')
            time.sleep(0.02)
        self.wait("document.readyState === 'complete'", address)

    def choose_file(self, selector, path):
        """Gives an input of the page a file, as a person's choice does."""
        root = self.call('DOM.getDocument')['root']['nodeId']
        node = self.call('DOM.querySelector', nodeId=root, selector=selector)['nodeId']
        self.call('DOM.setFileInputFiles', nodeId=node, files=[path])

    def press(self, key, code=0):
        """Presses a key."""
        text = {'text': key} if len(key) == 1 else {}
        self.call('Input.dispatchKeyEvent', type='keyDown', key=key,
                  windowsVirtualKeyCode=code, **text)
        self.call('Input.dispatchKeyEvent', type='keyUp', key=key, windowsVirtualKeyCode=code)

    def surroundings(self, width=1200, height=900, dark=False, scripts=True, calm=False):
        """Sets the window's size, the colors that its person wants, and whether scripts run."""
        self.call('Emulation.setDeviceMetricsOverride', width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.call('Emulation.setEmulatedMedia', features=[
            {'name': 'prefers-color-scheme', 'value': 'dark' if dark else 'light'},
            {'name': 'prefers-reduced-motion', 'value': 'reduce' if calm else 'no-preference'}])
        self.call('Emulation.setScriptExecutionDisabled', value=not scripts)

    def picture(self, path, whole=True):
        """Writes a PNG file of the page."""
        data = self.call('Page.captureScreenshot', format='png', captureBeyondViewport=whole)
        with open(path, 'wb') as file:
            file.write(base64.b64decode(data['data']))
