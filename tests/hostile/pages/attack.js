"use strict";
// What every page of an attack begins and ends with: run(act) runs the attack once mraid answers; done() says, as often as
// it has to, that the page has done all that it wanted to.
function run(act) {
  if (mraid.getState() === "loading")
    mraid.addEventListener("ready", act);
  else
    act();
}

function done() {
  setInterval(() => run(() => mraid.expand("done")), 1000);
}
