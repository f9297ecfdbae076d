camera profile 1
# An assumption, made by hand: no camera was seen to behave so.
# A camera of type 0 that takes its time; every answer still comes within the tool's first read.
type ostra
delay heartbeat 20 35 60
delay getSn 12 25 40
delay getAppVersion 15 22 35
delay getSystemVersion 15 22 35
delay getQvVersion 15 25 38
delay getModelInfo 18 28 42
delay catalogue 20 30 45
delay any 10 18 30
text getModelInfo model_v1 2023-06-01
pictures 3
capture-time 450
restart-time 6000
