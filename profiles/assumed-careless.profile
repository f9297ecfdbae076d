camera profile 1
# An assumption, made by hand: no camera was seen to behave so.
# A camera of type 1 that cares for nothing that the tool does not look at.
type dorvel
delay any 4 8 16
fault zero-check@any
fault address=0x00@getProperty
fault count=0@catalogue
orientation 45 3 unknown 981
all-addresses on
short-requests on
wrong-check-codes on
