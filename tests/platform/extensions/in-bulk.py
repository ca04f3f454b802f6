# Takes what comes until nothing comes, then answers all with its number.
while True:
    s.settimeout(None)
    taken = [request()]
    s.settimeout(0.3)
    try:
        while True: taken.append(request())
    except socket.timeout: pass
    for i in reversed(taken): answer(i, date(len(taken)) + b'\0')
