# Runs a program at a terminal, where its first question is answered.
import os, pty, sys
answers = [sys.argv[1].encode() + b'\n']
read = lambda fd: answers.pop() if answers else b''
sys.exit(os.waitstatus_to_exitcode(pty.spawn(sys.argv[2:], stdin_read=read)))
