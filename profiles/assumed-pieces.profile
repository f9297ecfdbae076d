camera profile 1
# An assumption, made by hand: no camera was seen to behave so.
# A camera of type 4 with a slow queue to its line: long answers come in two pieces.
type sales-dynamic
delay any 6 9 14
fault split=12,8@getModelInfo
fault split=12,8@getSn
unknown-ids off
boot-bytes 626F6F74206F6B0D0A
