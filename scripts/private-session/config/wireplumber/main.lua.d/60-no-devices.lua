-- Leaves the machine's sound cards and cameras alone. For WirePlumber 0.4.
for _, monitor in ipairs({ alsa_monitor, v4l2_monitor, libcamera_monitor }) do
  monitor.enabled = false
end
