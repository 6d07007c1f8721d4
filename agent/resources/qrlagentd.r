# The agent's resources. The build makes Contents/Resources/qrlagentd.rsrc of them.

# What the agent shows when it is asked to look after a camera.
resource 'ALRT' 138 "Camera request" purgeable
  rect 60 81 190 481
  int16 138     # its item list
  int16 0x5555  # at every stage: a box, one sound, and the first item as the default button
  int16 0x300A  # in the alert position of the main screen

resource 'DITL' 138 "Camera request" purgeable
  button 98 322 118 380 "OK"
  label 13 78 29 380 "Camera agent"
  label 35 78 83 380
    "The agent \"qrlagentd\" was asked to look after a camera. "
    "It has taken the request; nothing needs to be done."
