# Answers with the files beside it, and keeps what it is asked.
os.chdir(os.path.dirname(__file__))
for i in range(3):
    head = take(4)
    open('asked', 'ab').write(head + take(struct.unpack('<I', head)[0]))
    s.sendall(open(f'answer{i}', 'rb').read())
take(1)
