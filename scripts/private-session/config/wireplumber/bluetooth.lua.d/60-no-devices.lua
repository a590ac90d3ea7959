-- Likewise the wireless devices. For WirePlumber 0.4.
bluez_monitor.enabled = false
