"""Moves one file over the loopback with our session and with three peers, side by side.

A peer's time is that of its processes with the whole file, less that with a file of one block: so
neither process start nor the pauses with which some protocols begin and end count against it. What
arrived is compared with what was sent. Servers listen on 127.0.0.1 alone, are bounded in time and
ended in any case. Prints one line per run: peer, size, round, frames, nanoseconds, bytes.
"""

import argparse
import getpass
import os
import re
import socket
import subprocess
import sys
import time

LONGEST_RUN = 60  # seconds
LONGEST_SERVER = 600
WHOLE = 16 << 20
KERMIT = (
    "set quiet on,set streaming off,set window 1,set send packet-length 1000,"
    "set receive packet-length 1000,set file type binary,set transfer display none,set delay 0,"
    "set prefixing minimal,set clear-channel on,"
)


class Bench:
    def __init__(self, options):
        self.programs = os.path.abspath(options.programs)
        self.rounds = options.rounds
        self.folder = options.folder
        self.sent = os.path.join(self.folder, "sent")
        self.got = os.path.join(self.folder, "got")
        self.servers = []
        os.makedirs(self.sent)
        os.makedirs(self.got)
        os.chmod(self.folder, 0o755)
        whole = WHOLE // 16 if options.quick else WHOLE
        content = os.urandom(whole)
        self.files = {"whole": content, "one-block": content[:1000]}
        for name, data in self.files.items():
            with open(os.path.join(self.sent, name), "wb") as file:
                file.write(data)
            os.chmod(os.path.join(self.sent, name), 0o644)

    # --- Processes

    def start(self, arguments, **how):
        how.setdefault("stdin", subprocess.DEVNULL)
        how.setdefault("stdout", subprocess.DEVNULL)
        how.setdefault("stderr", subprocess.DEVNULL)
        return subprocess.Popen(
            ["timeout", "-k", "1", str(LONGEST_RUN)] + arguments, cwd=self.got, **how
        )

    def serve(self, arguments, **how):
        server = subprocess.Popen(
            ["timeout", "-k", "1", str(LONGEST_SERVER)] + arguments,
            stdin=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            **how,
        )
        self.servers.append(server)
        return server

    def stop_servers(self):
        for server in self.servers:
            server.terminate()
        for server in self.servers:
            try:
                server.wait(5)
            except subprocess.TimeoutExpired:
                server.kill()
                server.wait()

    def timed(self, processes):
        """Starts them all and waits for them all."""
        begun = time.monotonic_ns()
        running = [start() for start in processes]
        failed = [process for process in running if process.wait() != 0]
        taken = time.monotonic_ns() - begun
        if failed:
            raise SystemExit("failed: " + " ".join(failed[0].args))
        return taken

    def verify(self, path, name):
        with open(path, "rb") as file:
            received = file.read()
        os.remove(path)
        content = self.files[name]
        # XMODEM fills its last block.
        if received[: len(content)] != content or len(received) - len(content) >= 1024:
            raise SystemExit(path + " differs from what was sent")

    # --- The peers: each moves one file and gives nanoseconds and frames.

    def blocks(self, name, size):
        return -(-len(self.files[name]) // size)

    def start_brennik(self, block):
        port = {}
        for name in self.files:
            served = os.path.join(self.folder, f"served-{name}")
            os.makedirs(served, exist_ok=True)
            os.link(os.path.join(self.sent, name), os.path.join(served, name))
            server = self.serve(
                [os.path.join(self.programs, "brenniksim"), "service", "--listen", "127.0.0.1:0",
                 "--serve", served, "--block", str(block), "--quiet"],
                stdout=subprocess.PIPE, text=True,
            )
            port[name] = int(server.stdout.readline().rsplit(":", 1)[1])
        self.port = port

    def brennik_client(self, port, block):
        """One run of the client; gives its nanoseconds."""
        with open(os.path.join(self.folder, "BrennikClient.ini"), "w", newline="\r\n") as ini:
            ini.write(
                "[GENERAL]\nProfilecount=1\n[PROFILE_1]\nProfileName=Measured\nMode=0\n"
                f"WorkingFolder={self.got}\nPlatformName=VX520\nDownloadType=F\n"
                "ApplicationID=POSAPP\nTerminalID=000123-01\n"
                f"BlockSize={block}\nMemorySize=4096\nLoggingEnabled=FALSE\n"
                f"ServerIPAddress1=127.0.0.1\nServerPortNo1={port}\nServerConnectTimeout=5\n"
                "ConnectAttempts=1\nReadPacketAttempts=1\nSendPacketAttempts=3\n"
                "CharTimeout=5\nReadPacketTimeout=5\n"
            )
        return self.timed([lambda: self.start(
            [os.path.join(self.programs, "brennikclient"), "-configfiledir", self.folder,
             "-profileid", "1"])])

    def brennik(self, name, block):
        taken = self.brennik_client(self.port[name], block)
        self.verify(os.path.join(self.got, name), name)
        return taken, self.blocks(name, block)

    def brennik_sender(self, name, block):
        """The same with frames made beforehand, which shows what the service costs."""
        blocks = self.blocks(name, block)
        sender = self.start(
            [os.path.join(self.programs, "bench", "send_frames"), str(blocks), str(block)],
            stdout=subprocess.PIPE, text=True)
        with sender.stdout:
            port = int(sender.stdout.readline())
        taken = self.brennik_client(port, block)
        received = os.path.join(self.got, "f000000.dt")
        if sender.wait() != 0 or os.path.getsize(received) != blocks * block:
            raise SystemExit("the session with send_frames failed")
        os.remove(received)
        return taken, blocks

    def start_tftp(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
            probe.bind(("127.0.0.1", 0))
            self.tftp_port = probe.getsockname()[1]
        self.serve(
            ["atftpd", "--daemon", "--no-fork", "--bind-address", "127.0.0.1", "--port",
             str(self.tftp_port), "--user", getpass.getuser(), "--no-multicast", "--logfile",
             os.path.join(self.folder, "atftpd.log"), self.sent],
            stdout=subprocess.DEVNULL,
        )
        deadline = time.monotonic() + 5
        while not self.tftp_listens():
            if time.monotonic() > deadline:
                raise SystemExit("atftpd did not start")
            time.sleep(0.05)

    def tftp_listens(self):
        with open("/proc/net/udp") as table:
            return f"0100007F:{self.tftp_port:04X} " in table.read()

    def tftp(self, name, block):
        path = os.path.join(self.got, name)
        taken = self.timed([lambda: self.start(
            ["atftp", "--option", f"blksize {block}", "-g", "-r", name, "-l", path, "127.0.0.1",
             str(self.tftp_port)])])
        self.verify(path, name)
        return taken, len(self.files[name]) // block + 1  # a last short one, empty if need be

    def loopback_pair(self):
        with socket.socket() as listener:
            listener.bind(("127.0.0.1", 0))
            listener.listen(1)
            ends = [socket.create_connection(listener.getsockname()), listener.accept()[0]]
        for end in ends:
            end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        return ends

    def xmodem(self, name, block):
        one, other = self.loopback_pair()
        with one, other:
            taken = self.timed([
                lambda: self.start(["rx", "-q", "-b", "-y", name], stdin=other, stdout=other),
                lambda: self.start(["sx", "-q", "-k", "-b", os.path.join(self.sent, name)],
                                   stdin=one, stdout=one),
            ])
        self.verify(os.path.join(self.got, name), name)
        return taken, self.blocks(name, block)

    def kermit(self, name, block):
        statistics = os.path.join(self.folder, "kermit.txt")
        one, other = self.loopback_pair()
        with one, other, open(statistics, "w") as output:
            def end_of(connection, commands, out):
                return self.start(
                    ["kermit", "-Y", "-H", "-F", str(connection.fileno()), "-C", KERMIT + commands],
                    pass_fds=[connection.fileno()], stdout=out)
            taken = self.timed([
                lambda: end_of(other, f"receive /binary {name},exit", subprocess.DEVNULL),
                lambda: end_of(one, f"send /binary {self.sent}/{name} {name},"
                                    "statistics /verbose,exit", output),
            ])
        self.verify(os.path.join(self.got, name), name)
        with open(statistics) as text:
            packets = int(re.search(r"packets sent\s*:\s*(\d+)", text.read()).group(1))
        return taken, packets

    def measure(self):
        self.start_brennik(1024)
        self.start_tftp()
        peers = [
            ("brennik", 1024, self.brennik),
            ("brennik-sender", 1024, self.brennik_sender),
            ("tftp", 1024, self.tftp),
            ("tftp", 8192, self.tftp),
            ("xmodem-1k", 1024, self.xmodem),
            ("kermit", 1000, self.kermit),
        ]
        for number in range(self.rounds):
            turn = number % len(peers)
            for peer, size, move in peers[turn:] + peers[:turn]:
                without, few = move("one-block", size)
                taken, frames = move("whole", size)
                print(peer, size, number, frames - few, taken - without,
                      len(self.files["whole"]) - len(self.files["one-block"]), sep="\t", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True)
    parser.add_argument("--folder", required=True)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--quick", action="store_true")
    options = parser.parse_args()
    # Each of the two runs has a folder of its own.
    options.folder = os.path.join(options.folder, f"peers-{os.getpid()}")
    os.makedirs(options.folder)
    bench = Bench(options)
    try:
        bench.measure()
    finally:
        bench.stop_servers()


sys.exit(main())
