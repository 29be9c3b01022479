"use strict";
// Common frame of every attack page: run(act) starts the attack once mraid responds; done() reports the page's
// completion, repeatedly if necessary.
function run(act) {
  if (mraid.getState() === "loading")
    mraid.addEventListener("ready", act);
  else
    act();
}

function done() {
  setInterval(() => run(() => mraid.expand("done")), 1000);
}
