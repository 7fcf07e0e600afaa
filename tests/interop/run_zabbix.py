#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT
"""Imports a template into a Zabbix server of its own, links it to a host, and waits for values and a problem.

    run_zabbix.py TEMPLATE SNMP-PORT EXPECTED...

TEMPLATE is a file. The host's SNMP agent answers at 127.0.0.1:SNMP-PORT. Each EXPECTED is "item | NAME | VALUE" or
"problem | NAME". The exit status is 0 once all of them hold, 77 if a program is missing, and 1 otherwise.

Without its MIB modules a server shows texts beyond ASCII as hexadecimal digits, so the server here gets the modules of
the folders in MIBDIRS.

Database, server and frontend run below a temporary folder, and end with this program. No service of the system is
touched. PostgreSQL refuses to run as root, so root starts them as the user "nobody".
"""

import glob
import gzip
import json
import os
import pwd
import random
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request

SQL_FOLDER = "/usr/share/zabbix-server-pgsql"
FRONTEND = "/usr/share/zabbix"
CONFIG_PATH = "/etc/zabbix/zabbix.conf.php"  # fixed in the frontend
DEADLINE_S = 900  # for all of it, on a busy machine
EXECUTE_NOW = 6  # a type of task
SNMP_INTERFACE = 2


START = time.monotonic()


class Failure(Exception):
    """What went wrong."""


def skip(reason):
    print(reason)
    sys.exit(77)


def free_port():
    """Below 32768: the server takes no others."""
    while True:
        port = random.randrange(20000, 32768)
        with socket.socket() as probe:
            try:
                probe.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue


def postgres_folder():
    """The programs of the newest PostgreSQL; Debian keeps them out of the path."""
    folders = glob.glob("/usr/lib/postgresql/*/bin")
    usable = [each for each in folders if os.path.exists(each + "/initdb")]
    return max(usable, key=lambda each: int(each.split("/")[4]), default=None)


class Site:
    """Database, server and frontend. The path of a socket may have 107 bytes, so sockets have a short folder."""

    def __init__(self, folder, socket_folder):
        self.folder = folder
        self.socket_folder = socket_folder
        self.programs = []
        self.as_user = []
        if os.getuid() == 0:
            nobody = pwd.getpwnam("nobody")
            for each in (folder, socket_folder):
                os.chown(each, nobody.pw_uid, nobody.pw_gid)
            self.as_user = ["setpriv", "--reuid=nobody", f"--regid={nobody.pw_gid}", "--clear-groups"]
        self.environment = {"PATH": os.environ["PATH"], "HOME": folder, "TMPDIR": folder, "LC_ALL": "C.UTF-8"}

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def run(self, *command, **options):
        done = subprocess.run([*self.as_user, *command], cwd=self.folder, env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **options)
        if done.returncode != 0:
            raise Failure(f"{command[0]}: {done.stdout[-2000:]}")

    def start(self, name, end_signal, *command):
        """The system sends the signal if this program is killed."""
        with open(self.path(name + ".log"), "w", encoding="utf-8") as log:
            program = subprocess.Popen(
                [*self.as_user, "setpriv", f"--pdeathsig={end_signal}", *command],
                cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        self.programs.append((program, getattr(signal, "SIG" + end_signal)))

    def wait_for(self, what, predicate):
        """Returns the first true result of the predicate."""
        while time.monotonic() < START + DEADLINE_S:
            result = predicate()
            if result:
                return result
            for program, _ in self.programs:
                if program.poll() is not None:
                    raise Failure(f"no {what}, since a program has ended: {program.args}")
            time.sleep(0.5)
        raise Failure(f"no {what} in {DEADLINE_S} s")

    def stop(self):
        for program, end_signal in reversed(self.programs):
            program.send_signal(end_signal)
            try:
                program.wait(20)
            except subprocess.TimeoutExpired:
                program.kill()
                program.wait()

    def logs(self):
        for name in ("postgres.log", "php.log", "zabbix_server.log"):
            path = self.path(name)
            if not os.path.exists(path):
                continue
            with open(path, encoding="utf-8", errors="replace") as file:
                yield f"--- {name}\n{file.read()[-2000:]}"


def say(text):
    print(f"{time.monotonic() - START:.0f} s: {text}", flush=True)


def start_database(site, programs):
    """A cluster that listens on a local socket alone, with Zabbix's own tables and data."""
    site.run(programs + "/initdb", "--pgdata=data", "--username=zabbix", "--auth=trust", "--encoding=UTF8",
             "--no-sync")
    site.start("postgres", "INT", programs + "/postgres", "-D", "data", "-k", site.socket_folder,
               "-c", "listen_addresses=", "-c", "fsync=off", "-c", "synchronous_commit=off", "-c", "full_page_writes=off",
               "-c", "max_wal_size=2GB")
    client = [programs + "/psql", "--host", site.socket_folder, "--username=zabbix", "--no-psqlrc", "--quiet",
              "--set=ON_ERROR_STOP=1"]
    ready = [programs + "/pg_isready", "--host", site.socket_folder, "--username=zabbix", "--quiet"]
    site.wait_for("database", lambda: subprocess.run(ready, check=False).returncode == 0)
    site.run(*client, "--dbname=postgres", "--command=CREATE DATABASE zabbix")
    site.environment["PGOPTIONS"] = "-c session_replication_role=replica"  # no checks of foreign keys: faster
    for name in ("schema", "images", "data"):
        with gzip.open(f"{SQL_FOLDER}/{name}.sql.gz", "rt", encoding="utf-8") as file:
            site.run(*client, "--dbname=zabbix", "--output=/dev/null", input=file.read())
    del site.environment["PGOPTIONS"]


def copy_mib_modules(site):
    """The server's user may not read the folders."""
    os.mkdir(site.path("mibs"))
    for folder in reversed(os.environ.get("MIBDIRS", "").split(":")):
        for path in filter(os.path.isfile, glob.glob(folder + "/*")):
            shutil.copy(path, site.path("mibs"))
    site.environment.update(MIBDIRS=site.path("mibs"), MIBS="+VIGIL-AGENT-MIB")


def start_server(site):
    copy_mib_modules(site)
    site.write("server.conf", f"""
LogType=console
PidFile={site.path("server.pid")}
SocketDir={site.socket_folder}
DBHost={site.socket_folder}
DBName=zabbix
DBUser=zabbix
ListenIP=127.0.0.1
ListenPort={free_port()}
CacheUpdateFrequency=1
StartPollers=2
StartPollersUnreachable=1
StartDiscoverers=0
StartHTTPPollers=0
StartPingers=0
StartTrappers=1
StartDBSyncers=1
Timeout=10
""")
    site.start("zabbix_server", "TERM", shutil.which("zabbix_server", path="/usr/sbin:/usr/local/sbin:/usr/bin"),
               "--foreground", "--config", site.path("server.conf"))


def start_frontend(site):
    """A copy of the frontend, as the place of its configuration is fixed. Returns its address."""
    shutil.copytree(FRONTEND, site.path("web"), ignore=shutil.ignore_patterns("locale", "audio", "fonts"))
    place = site.path("web/include/classes/core/CConfigFile.php")
    with open(place, encoding="utf-8") as file:
        code = file.read()
    with open(place, "w", encoding="utf-8") as file:
        file.write(code.replace(CONFIG_PATH, site.path("zabbix.conf.php")))
    site.write("zabbix.conf.php", f"""<?php
$DB['TYPE'] = 'POSTGRESQL';
$DB['SERVER'] = '{site.socket_folder}';
$DB['PORT'] = '0';
$DB['DATABASE'] = 'zabbix';
$DB['USER'] = 'zabbix';
$DB['PASSWORD'] = '';
$DB['SCHEMA'] = '';
$DB['ENCRYPTION'] = false;
$DB['DOUBLE_IEEE754'] = true;
$ZBX_SERVER_NAME = 'test';
$IMAGE_FORMAT_DEFAULT = IMAGE_FORMAT_PNG;
""")
    port = free_port()
    site.start("php", "TERM", "php", "-S", f"127.0.0.1:{port}", "-t", site.path("web"))
    return f"http://127.0.0.1:{port}/api_jsonrpc.php"


class Api:
    """The frontend's API, which its own pages use, too."""

    def __init__(self, address):
        self.address = address
        self.token = None

    def call(self, method, **parameters):
        return self.call_with(method, parameters)

    def call_with(self, method, parameters):
        body = {"jsonrpc": "2.0", "id": 1, "method": method, "params": parameters, "auth": self.token}
        request = urllib.request.Request(self.address, json.dumps(body).encode(),
                                         {"Content-Type": "application/json-rpc"})
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        with opener.open(request, timeout=60) as reply:
            text = reply.read().decode()
        try:
            answer = json.loads(text)
        except ValueError:
            raise Failure(f"{method}: {text[:1000]}") from None
        if "error" in answer:
            raise Failure(f"{method}: {answer['error']}")
        return answer["result"]

    def version(self):
        try:
            return self.call_with("apiinfo.version", [])
        except (urllib.error.URLError, ConnectionError):
            return None

    def log_in(self):
        self.token = self.call("user.login", username="Admin", password="zabbix")


def import_template(api, version, path):
    """Returns the template's identifier in the server."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    create = {"createMissing": True, "updateExisting": True}
    rules = {kind: create for kind in ("templates", "items", "discoveryRules", "triggers", "valueMaps")}
    for kind in ("template_groups", "host_groups") if version >= (6, 2) else ("groups",):
        rules[kind] = {"createMissing": True}
    for _ in ("the first time", "an update"):
        api.call("configuration.import", format="yaml", source=text, rules=rules)
    name = re.search(r"^ +template: '(.+)'$", text, re.MULTILINE).group(1)
    (template,) = api.call("template.get", filter={"host": [name]})
    return template["templateid"]


def create_host(api, template, snmp_port):
    group = api.call("hostgroup.create", name="Test")["groupids"][0]
    interface = {"type": SNMP_INTERFACE, "main": 1, "useip": 1, "ip": "127.0.0.1", "dns": "",
                 "port": str(snmp_port),
                 "details": {"version": 2, "bulk": 1, "community": "{$SNMP_COMMUNITY}"}}
    return api.call("host.create", host="vigil", interfaces=[interface], groups=[{"groupid": group}],
                    templates=[{"templateid": template}],
                    macros=[{"macro": "{$SNMP_COMMUNITY}", "value": "public"}])["hostids"][0]


def watch_nothing_else(api):
    """The data of a new server have the server itself as a host."""
    for host in api.call("host.get", output=["hostid"]):
        api.call("host.update", hostid=host["hostid"], status=1)


def execute_now(api, ids):
    api.call_with("task.create", [{"type": EXECUTE_NOW, "request": {"itemid": each}} for each in ids])


def is_expected(api, host, expected):
    kind, name, *value = expected.split(" | ")
    if kind == "problem":
        return any(each["name"] == name for each in api.call("problem.get", hostids=host))
    items = api.call("item.get", hostids=host, filter={"name": name}, output=["lastvalue", "lastclock"])
    return any(each["lastclock"] != "0" and each["lastvalue"] == value[0] for each in items)


def watch(site, api, host, expectations):
    """Checks and discovers now, as an operator may ask, until all expectations hold."""
    rules = [each["itemid"] for each in api.call("discoveryrule.get", hostids=host, output=["itemid"])]
    asked = {}

    def unmet():
        items = [each["itemid"] for each in api.call("item.get", hostids=host, output=["itemid"])]
        due = [each for each in rules + items if asked.get(each, 0) < time.monotonic() - 10]
        if due:
            execute_now(api, due)
            asked.update((each, time.monotonic()) for each in due)
        return [each for each in expectations if not is_expected(api, host, each)]

    try:
        site.wait_for("value or problem", lambda: not unmet())
    except Failure:
        shown = {"output": ["name", "lastvalue", "state", "error"], "hostids": host}
        raise Failure(f"not seen: {unmet()}; discovery: {api.call('discoveryrule.get', **shown)}; "
                      f"items: {api.call('item.get', **shown)}") from None


def run(site, template, snmp_port, expectations):
    start_database(site, postgres_folder())
    say("the database is filled")
    address = start_frontend(site)
    api = Api(address)
    version = site.wait_for("frontend", api.version)
    numbers = tuple(map(int, version.split(".")[:2]))
    if numbers < (6, 0):
        skip(f"Zabbix {version} is installed; the template is for 6.0 and newer")
    api.log_in()
    watch_nothing_else(api)
    host = create_host(api, import_template(api, numbers, template), snmp_port)
    say("the template is imported and linked")
    start_server(site)
    watch(site, api, host, expectations)
    say(f"Zabbix {version} has seen all of it")


def main():
    template, snmp_port, *expectations = sys.argv[1:]
    for program in ("zabbix_server", "php", "setpriv"):
        if not shutil.which(program, path=os.environ["PATH"] + ":/usr/sbin:/usr/local/sbin"):
            skip(f"{program} is not installed")
    for path in (FRONTEND + "/api_jsonrpc.php", SQL_FOLDER + "/schema.sql.gz"):
        if not os.path.exists(path):
            skip(f"{path} is not installed")
    if not postgres_folder():
        skip("PostgreSQL is not installed")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    folder = tempfile.mkdtemp(prefix="vigil-zabbix.")
    socket_folder = tempfile.mkdtemp(prefix="vigil-zabbix.", dir="/tmp")
    site = Site(folder, socket_folder)
    try:
        run(site, template, snmp_port, expectations)
    except Failure as failure:
        print(failure, *site.logs(), sep="\n")
        sys.exit(1)
    finally:
        site.stop()
        for each in (folder, socket_folder):
            shutil.rmtree(each, ignore_errors=True)


main()
