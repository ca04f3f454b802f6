# Answers with what it was started with.
status = dict(l.split(':\t', 1) for l in open('/proc/self/status').read().splitlines())
seen = [os.listdir('/proc/self/fd'), os.readlink('/proc/self/fd/1'), os.readlink('/proc/self/fd/2'),
        os.getcwd(), os.getpgid(0) == os.getpid() == os.getsid(0), int(status['SigBlk'], 16),
        int(status['SigIgn'], 16) & 1]
answer(request(), b'\0' + error(repr(seen).encode()))
