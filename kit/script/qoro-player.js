// The kit's script library: what a creative's page says to the video ad that it belongs to, and hears from it.
//
//   qoroPlayer.addEventListener('video_timeupdate', data => show(data.e.current_time));
//   qoroPlayer.setVideoPause();
//   const seconds = await qoroPlayer.getVideoTotalTime();
//
// A listener gets what the event carries: {e: {…}}, or the bare record, or null. Every command answers with a promise;
// it is rejected, with a line that says why, when the ad does not know the command or its arguments.
(() => {
    'use strict';

    const { create, defineProperty, freeze, hasOwn } = Object;

    // A page may hold the library twice: by the kit's own script element and by its own reference. The first one stays.
    // Asked as an own property, because an element with that id would answer for the bare name.
    if (hasOwn(window, 'qoroPlayer'))
        return;

    // Kept here, so that a page that replaces a built-in does not break its player.
    const { Error, Promise, setTimeout } = window;
    const { parse, stringify } = window.JSON;
    const reject = Promise.reject.bind(Promise);
    const bridge = window.webkit && window.webkit.messageHandlers && window.webkit.messageHandlers.qoroPlayer;
    const post = bridge && bridge.postMessage.bind(bridge);

    function send(command, args) {
        if (!post)
            return reject(new Error('There is no video ad around this page.'));
        try {
            // As plain data: WebKit never answers a message with, say, a function in it.
            return post({ command, args: parse(stringify(args)) });
        } catch (unsendable) { // a record that holds itself, for example
            return reject(unsendable);
        }
    }

    // Identifiers differ from page to page: an event that was on its way to an earlier page finds nobody here.
    const page = Math.random().toString(36).slice(2);
    let made = 0;
    const listeners = create(null); // event name → listener id → function
    const callbacks = create(null); // callback id → function

    function idOf(name, listener) {
        for (const id in listeners[name])
            if (listeners[name][id] === listener)
                return id;
        return null;
    }

    function addEventListener(name, listener) {
        name = `${name}`;
        if (typeof listener !== 'function')
            return reject(new Error('A listener is a function.'));
        const id = idOf(name, listener) ?? `${page}-${++made}`;
        listeners[name] ??= create(null);
        listeners[name][id] = listener;
        callbacks[id] = listener;
        return send('addEventListener', [name, id, id]); // one identifier serves as the listener's and the callback's
    }

    function removeEventListener(name, listener) {
        name = `${name}`;
        const id = idOf(name, listener);
        if (id === null)
            return send('removeEventListener', [name, null]);
        delete listeners[name][id];
        delete callbacks[id];
        return send('removeEventListener', [name, id]);
    }

    // Called by the kit alone: events in the order in which they happened, each as [callback ids, data].
    function deliver(events) {
        for (let e = 0; e < events.length; ++e) {
            const ids = events[e][0];
            const data = events[e][1];
            for (let i = 0; i < ids.length; ++i) {
                const listener = callbacks[ids[i]];
                if (!listener)
                    continue;
                try {
                    listener(data);
                } catch (thrown) { // reported as any uncaught error; the other listeners still hear the event
                    setTimeout(() => { throw thrown; });
                }
            }
        }
    }

    const player = {
        addEventListener,
        removeEventListener,

        setVideoPlay: () => send('setVideoPlay', []),
        setVideoPause: () => send('setVideoPause', []),
        setVideoMute: () => send('setVideoMute', []),
        setVideoUnmute: () => send('setVideoUnmute', []),
        // seconds from the start
        setVideoSeekToTime: seconds => send('setVideoSeekToTime', [seconds]),
        // whole seconds; 0 until they are known
        getVideoTotalTime: () => send('getVideoTotalTime', []),
        getVideoIsMute: () => send('getVideoIsMute', []),
        // shows the controls while the video does not play
        checkVideoPlay: () => send('checkVideoPlay', []),

        // an ad record, as an ad file holds it
        playNextVideo: record => send('playNextVideo', [record]),
        // whether this is another video than the one that plays
        checkCanPlayNextVideo: address => send('checkCanPlayNextVideo', [address]),
        cancelPrePauseLocations: () => send('cancelPrePauseLocations', []),

        // 'portrait' or 'landscape'
        changeOrientation: orientation => send('changeOrientation', [orientation]),
        MRAIDClose: () => send('MRAIDClose', []),
        // whether the page draws the close control itself
        MRAIDUseCustomClose: flag => send('MRAIDUseCustomClose', [flag]),
    };
    defineProperty(player, 'deliver', { value: deliver });
    defineProperty(window, 'qoroPlayer', { value: freeze(player), enumerable: true });
})();
