#!/usr/bin/env -S python3 -IS
import os, signal, socket, struct, sys, time
s = socket.socket(fileno=0)
def take(n):
    b = b''
    while len(b) < n:
        c = s.recv(n - len(b))
        if not c: sys.exit()
        b += c
    return b
def request():
    n, kind, i = struct.unpack('<IBQ', take(13))
    take(n - 9)
    return i
def frame(kind, i, body): return struct.pack('<IBQ', 9 + len(body), kind, i) + body
def date(t): return b'\4' + struct.pack('<d', t)
def size(n): return bytes([n]) if n < 128 else bytes([n & 127 | 128]) + size(n >> 7)
def text(t): return b'\5' + size(len(t)) + t
def error(t): return (b'\x09\x05Error\x08\3\5\6domain\5\1d\5\4code\2' + struct.pack('<q', 3) +
                      b'\5\x08userInfo\x08\1\5\x10DebugDescription' + text(t))
def answer(i, body=date(7) + b'\0', kind=1): s.sendall(frame(kind, i, body))
def serve():
    while True: answer(request())
