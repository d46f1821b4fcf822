#!/usr/bin/env python3
"""Prints the address of each request that a page made: usage: check_net_log.py FILE

FILE is a net log of Chromium. What the browser asks for of its own accord has no origin there; what a page asks for has
one, be it the opaque one of a file.
"""

import json
import sys

text = open(sys.argv[1], encoding="utf-8").read()
try:
    log = json.loads(text)
except ValueError:  # a browser that was in a hurry leaves the end out
    log = json.loads(text.rstrip().rstrip(",") + "]}")
kinds = {number: name for name, number in log["constants"]["logEventTypes"].items()}
for event in log["events"]:
    parameters = event.get("params", {})
    isRequest = kinds[event["type"]] == "URL_REQUEST_START_JOB" and "url" in parameters
    if isRequest and parameters.get("initiator") != "not an origin":
        print(parameters["url"])
