# Does a statement with each entry of a file of donations.
import plistlib, sys, time
contents = plistlib.load(open(sys.argv[1], 'rb'))
for entry in contents['donations']:
    exec(sys.argv[2])
plistlib.dump(contents, open(sys.argv[1], 'wb'))
