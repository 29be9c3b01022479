// The kit's script library: the interface between a creative and its video ad.
//
//   mraid        the ad as defined by IAB MRAID 3.0, for an interstitial
//   qoroPlayer   the video: qoroPlayer.addEventListener('video_timeupdate', data => show(data.e.current_time));
//   MRAID_ENV    describes the environment that shows the ad
//
// A page may replace any built-in after this script has run without affecting anything but itself: the library saves
// the built-ins that it needs, reads nothing through a prototype that a page can modify, and builds lists and records
// without invoking setters.
(() => {
    'use strict';

    const { create, defineProperty, freeze, getOwnPropertyDescriptor, hasOwn, keys } = Object;

    // A page may include the library twice: through the kit's script element and through its own reference. The first
    // instance remains. The test is for an own property, because an element with this id also answers to the bare name.
    if (hasOwn(window, 'qoroPlayer'))
        return;

    const { Error, ErrorEvent, Promise, isFinite, setTimeout } = window;
    const { isArray } = Array;
    const { round } = Math;
    const { parse, stringify } = JSON;
    const { apply } = Reflect;
    const { then } = Promise.prototype;
    const { toISOString } = Date.prototype;
    const reject = Promise.reject.bind(Promise);
    const dispatch = window.dispatchEvent.bind(window);
    const post = window.qoroBridge;

    // -------------------------------------------------------------------------------------------------------- Bridge

    // The ad's limits on a message. Checking them here confines the cost of an oversized message to the page.
    const deepest = 30;
    const mostNames = 254; // plus the two of the message itself
    const longest = 64 * 1024; // bytes of JSON; also bounds the numbers of entries and characters

    // Calls one of two functions when a promise settles. An own 'constructor' shadows the page's, which then() would
    // use.
    function after(promise, done, failed) {
        defineProperty(promise, 'constructor', { __proto__: null, value: undefined });
        apply(then, promise, [done, failed]);
    }

    // Reports an exception of the page as an uncaught error. If it were thrown again here, the engine would hide its
    // text and place, because this script is of another origin.
    function reportException(thrown) {
        const { sourceURL: filename, line: lineno, column: colno } = thrown instanceof Error ? thrown : {};
        const message = `${thrown}`;
        dispatch(new ErrorEvent('error', { message, filename, lineno, colno, error: thrown, cancelable: true }));
    }

    // Calls a function of the page. An exception does not affect other listeners.
    function call(listener, args) {
        try {
            apply(listener, undefined, args);
        } catch (thrown) {
            setTimeout(() => reportException(thrown));
        }
    }

    // A date in ISO 8601; null for any other value.
    function dateText(value) {
        try {
            return apply(toISOString, value, []);
        } catch (none) {
            return null;
        }
    }

    function spend(left, what, amount) {
        left[what] -= amount;
        if (left[what] < 0)
            throw new Error('The arguments are too long.');
    }

    // Converts a value to plain data, undefined if it has none, without anything that would make JSON call a function
    // of the page. Deducts its size from the remaining limits.
    function plain(value, depth, left) {
        if (typeof value === 'string')
            spend(left, 'letters', value.length);
        if (value === null || typeof value === 'string' || typeof value === 'boolean')
            return value;
        if (typeof value === 'number')
            return isFinite(value) ? value : null;
        if (typeof value !== 'object')
            return undefined;
        if (depth > deepest)
            throw new Error('The arguments are nested too deeply.');
        const date = dateText(value);
        if (date !== null)
            return date;
        if (!isArray(value)) {
            const record = create(null);
            const names = keys(value);
            spend(left, 'names', names.length);
            for (let i = 0; i < names.length; ++i) {
                spend(left, 'letters', names[i].length);
                const entry = plain(value[names[i]], depth + 1, left);
                if (entry !== undefined)
                    record[names[i]] = entry;
            }
            return record;
        }
        const list = [];
        defineProperty(list, 'toJSON', { __proto__: null, value: undefined });
        spend(left, 'letters', value.length * 2);
        for (let i = 0; i < value.length; ++i) {
            const entry = plain(value[i], depth + 1, left);
            defineProperty(list, i, { __proto__: null, enumerable: true, value: entry === undefined ? null : entry });
        }
        return list;
    }

    // Sends the kit a command. The promise resolves to its result, or rejects with an error that describes the problem.
    function send(command, args) {
        if (!post)
            return reject(new Error('There is no video ad around this page.'));
        let text;
        try {
            const left = { __proto__: null, names: mostNames, letters: longest };
            text = stringify({ __proto__: null, command, args: plain(args, 0, left) });
        } catch (unsendable) { // for example a record that contains itself
            return reject(unsendable);
        }
        if (text.length > longest)
            return reject(new Error('The arguments are too long.'));
        return new Promise((done, refused) => {
            post(text, (error, json) => {
                if (error === null)
                    done(parse(json));
                else
                    refused(new Error(error));
            });
        });
    }

    // Identifiers are unique per page, so an event in transit to an earlier page matches no callback here.
    const page = Math.random().toString(36).slice(2);
    let made = 0;
    const callbacks = create(null); // callback id → function of an event's data

    // Requests the next events, repeatedly: JSON, in order of occurrence, each as [ids, data].
    function listen() {
        after(send('nextEvents', []), events => {
            for (let e = 0; e < events.length; ++e) {
                const ids = events[e][0];
                for (let i = 0; i < ids.length; ++i)
                    if (callbacks[ids[i]])
                        call(callbacks[ids[i]], [events[e][1]]);
            }
            listen();
        }, () => {}); // the ad has closed or shows another page
    }

    // Listeners by name; a function is registered at most once per name.
    function makeListeners() {
        const ids = create(null); // name → id → function, in order of registration
        const told = create(null); // id → whether tell() has called it
        return {
            __proto__: null,
            idOf(name, listener) {
                for (const id in ids[name])
                    if (ids[name][id] === listener)
                        return id;
                return null;
            },
            add(name, listener) {
                const id = `${page}-${++made}`;
                if (!ids[name])
                    ids[name] = create(null);
                ids[name][id] = listener;
                return id;
            },
            remove(name, id) {
                delete ids[name][id];
                delete told[id];
            },
            removeAll(name) {
                for (const id in ids[name])
                    this.remove(name, id);
            },
            wasTold: id => told[id] === true,
            // Does not call a listener that another one has just removed.
            tell(name, args) {
                const known = ids[name];
                for (const id in known) {
                    told[id] = true;
                    call(known[id], args);
                }
            },
        };
    }

    // -------------------------------------------------------------------------------------------------------- Player

    const playerListeners = makeListeners();

    function addPlayerListener(name, listener) {
        name = `${name}`;
        if (typeof listener !== 'function')
            return reject(new Error('A listener is a function.'));
        const known = playerListeners.idOf(name, listener);
        const id = known === null ? playerListeners.add(name, listener) : known;
        callbacks[id] = listener;
        return send('addEventListener', [name, id, id]); // the id of both listener and callback
    }

    function removePlayerListener(name, listener) {
        name = `${name}`;
        const id = playerListeners.idOf(name, listener);
        if (id !== null) {
            playerListeners.remove(name, id);
            delete callbacks[id];
        }
        return send('removeEventListener', [name, id]);
    }

    // Every command returns a promise. It rejects with an error that states the reason when the ad does not know the
    // command or its arguments, or ignores the command in its present state.
    const qoroPlayer = {
        // A listener receives the event's data: {e: {…}}, a plain record, or null.
        addEventListener: addPlayerListener,
        removeEventListener: removePlayerListener,

        setVideoPlay: () => send('setVideoPlay', []),
        setVideoPause: () => send('setVideoPause', []),
        // plays a video that has ended again, and shows it
        replay: () => send('replay', []),
        setVideoMute: () => send('setVideoMute', []),
        setVideoUnmute: () => send('setVideoUnmute', []),
        // seconds from the start
        setVideoSeekToTime: seconds => typeof seconds === 'number' && isFinite(seconds)
            ? send('setVideoSeekToTime', [seconds])
            : reject(new Error('The time is a number of seconds.')),
        // whole seconds; 0 until they are known
        getVideoTotalTime: () => send('getVideoTotalTime', []),
        getVideoIsMute: () => send('getVideoIsMute', []),
        // {tcf, gdprApplies, usPrivacy, gpp, gppSections}; null where the host supplies none
        getConsent: () => send('getConsent', []),
        // shows the controls while the video does not play
        checkVideoPlay: () => send('checkVideoPlay', []),

        // the next video's addresses and trackers
        playNextVideo: record => record !== null && typeof record === 'object' && !isArray(record)
            ? send('playNextVideo', [record])
            : reject(new Error('The next video is a record.')),
        // whether the address differs from that of the current video
        checkCanPlayNextVideo: address => send('checkCanPlayNextVideo', [address]),
        cancelPrePauseLocations: () => send('cancelPrePauseLocations', []),

        // where the ad's controls lie over the page, in CSS pixels: [{name, x, y, width, height, visible, hittable}, …]
        getControlRects: () => send('getControlRects', []),

        // 'portrait' or 'landscape'
        changeOrientation: orientation => orientation === 'portrait' || orientation === 'landscape'
            ? send('changeOrientation', [orientation])
            : reject(new Error('An orientation is portrait or landscape.')),
        MRAIDClose: () => send('MRAIDClose', []),
        // whether the page draws the close control itself
        MRAIDUseCustomClose: flag => send('MRAIDUseCustomClose', [flag]),
    };

    // --------------------------------------------------------------------------------------------------------- MRAID

    const listeners = makeListeners();
    const eventNames = {
        __proto__: null, ready: true, error: true, stateChange: true, viewableChange: true, sizeChange: true,
        exposureChange: true, audioVolumeChange: true,
    };

    // The state last received from the kit; 'loading' before the first message.
    let state = 'loading';
    let viewable = false;
    let exposure = { exposedPercentage: 0, visibleRectangle: null };
    let volume = null; // in percent; null while unknown
    let position = { x: 0, y: 0, width: 0, height: 0 };
    let screenSize = { width: 0, height: 0 };
    let appOrientation = { orientation: 'portrait', locked: false };
    let features = create(null);

    const orientationProperties = { __proto__: null, allowOrientationChange: true, forceOrientation: 'none' };
    const expandProperties = { __proto__: null, width: null, height: null, useCustomClose: false };
    let resizeProperties = null;
    const closePositions = {
        __proto__: null, 'top-left': true, 'top-right': true, 'bottom-left': true, 'bottom-right': true, center: true,
        'top-center': true, 'bottom-center': true,
    };

    // Error events are asynchronous: the page may set its listener after the call that failed.
    function fail(message, action) {
        setTimeout(() => listeners.tell('error', [message, action]));
    }

    // Sends the kit an MRAID command; a refusal becomes an error event.
    function ask(action, args) {
        if (state === 'loading')
            fail('The ad is not ready.', action);
        else
            after(send(`mraid.${action}`, args), () => {},
                refused => fail(typeof refused === 'string' ? refused : refused.message, action));
    }

    // An address as text; accepts URL objects.
    function addressText(address) {
        try {
            return `${address}`;
        } catch (none) {
            return '';
        }
    }

    // MRAID uses whole points.
    const copyOf = rectangle => rectangle && {
        x: round(rectangle.x), y: round(rectangle.y), width: round(rectangle.width), height: round(rectangle.height),
    };
    const copyOfSize = size => ({ width: round(size.width), height: round(size.height) });

    // The arguments of each event for the current state.
    const present = {
        __proto__: null,
        ready: () => [],
        stateChange: () => [state],
        viewableChange: () => [viewable],
        sizeChange: () => [round(position.width), round(position.height)],
        exposureChange: () => [exposure.exposedPercentage, copyOf(exposure.visibleRectangle), null],
        audioVolumeChange: () => [volume],
    };
    // A listener added late to one of these events is called once with the current state.
    const toldLate = { __proto__: null, ready: true, exposureChange: true, audioVolumeChange: true };

    // The kit may report a new size before the page is resized, so size and exposure events are deferred until the
    // window reports it. A page that is not being laid out receives them after a time-out.
    const longestResize = 250; // milliseconds
    const widthOfWindow = getOwnPropertyDescriptor(window, 'innerWidth').get;
    const heightOfWindow = getOwnPropertyDescriptor(window, 'innerHeight').get;
    let sizeDue = false;
    let exposureDue = false;
    let resizes = 0;

    function tell(name) {
        listeners.tell(name, present[name]());
    }

    function windowIsThere() {
        return apply(widthOfWindow, window, []) === round(position.width) &&
            apply(heightOfWindow, window, []) === round(position.height);
    }

    function tellDue() {
        const size = sizeDue;
        const exposed = exposureDue;
        sizeDue = exposureDue = false;
        if (size)
            tell('sizeChange');
        if (exposed)
            tell('exposureChange');
    }

    window.addEventListener('resize', () => {
        if (windowIsThere())
            tellDue();
    });

    // Applies the facts sent by the kit: initially all of them, later only those that changed.
    function learn(facts) {
        if (hasOwn(facts, 'error')) {
            fail(facts.error.message, facts.error.action);
            return;
        }
        const begins = state === 'loading';
        const before = copyOfSize(position);
        const told = name => hasOwn(facts, name);
        if (told('supports'))
            features = facts.supports;
        if (told('orientation'))
            appOrientation = facts.orientation;
        if (told('screen'))
            screenSize = facts.screen;
        if (told('position'))
            position = facts.position;
        if (told('exposure'))
            exposure = facts.exposure;
        if (told('viewable'))
            viewable = facts.viewable;
        if (told('volume'))
            volume = facts.volume;
        if (told('state'))
            state = facts.state;

        if (told('state'))
            tell('stateChange');
        if (begins)
            tell('ready');
        const resized = !begins && (round(position.width) !== before.width || round(position.height) !== before.height);
        sizeDue = sizeDue || resized;
        exposureDue = exposureDue || told('exposure');
        if (!sizeDue || windowIsThere()) {
            tellDue();
        } else if (resized) {
            const resize = ++resizes;
            setTimeout(() => {
                if (resize === resizes)
                    tellDue();
            }, longestResize);
        }
        if (told('viewable') && (viewable || !begins))
            tell('viewableChange');
        if (told('volume'))
            tell('audioVolumeChange');
    }

    function addListener(name, listener) {
        name = `${name}`;
        if (!eventNames[name] || typeof listener !== 'function') {
            fail(eventNames[name] ? 'A listener is a function.' : `There is no event ${name}.`, 'addEventListener');
            return;
        }
        if (listeners.idOf(name, listener) !== null)
            return;
        const id = listeners.add(name, listener);
        if (state === 'loading' || !toldLate[name])
            return;
        // Unless the listener has been removed, or called with the others, in the meantime.
        setTimeout(() => {
            if (listeners.idOf(name, listener) === id && !listeners.wasTold(id))
                call(listener, present[name]());
        });
    }

    function removeListener(name, listener) {
        name = `${name}`;
        if (listener === undefined || listener === null) {
            listeners.removeAll(name);
            return;
        }
        const id = listeners.idOf(name, listener);
        if (id === null)
            fail('There is no such listener.', 'removeEventListener');
        else
            listeners.remove(name, id);
    }

    // The record's own property if it has the type; otherwise the fallback.
    function entryOf(record, name, type, otherwise) {
        return record && hasOwn(record, name) && typeof record[name] === type ? record[name] : otherwise;
    }

    function setOrientationProperties(given) {
        if (given === null || typeof given !== 'object') {
            fail('The properties are a record.', 'setOrientationProperties');
            return;
        }
        if (state === 'loading') {
            fail('The ad is not ready.', 'setOrientationProperties');
            return;
        }
        const forced = entryOf(given, 'forceOrientation', 'string', orientationProperties.forceOrientation);
        if (forced !== 'portrait' && forced !== 'landscape' && forced !== 'none') {
            fail('forceOrientation is portrait, landscape or none.', 'setOrientationProperties');
            return;
        }
        orientationProperties.allowOrientationChange =
            entryOf(given, 'allowOrientationChange', 'boolean', orientationProperties.allowOrientationChange);
        orientationProperties.forceOrientation = forced;
        ask('setOrientationProperties', [orientationProperties]);
    }

    // Parses JSON; returns malformed text unchanged, for the kit to refuse.
    function read(text) {
        try {
            return parse(text);
        } catch (malformed) {
            return text;
        }
    }

    function setExpandProperties(given) {
        if (given === null || typeof given !== 'object') {
            fail('The properties are a record.', 'setExpandProperties');
            return;
        }
        if (entryOf(given, 'width', 'number', 0) < 0 || entryOf(given, 'height', 'number', 0) < 0) {
            fail('width and height are not negative.', 'setExpandProperties');
            return;
        }
        expandProperties.width = entryOf(given, 'width', 'number', expandProperties.width);
        expandProperties.height = entryOf(given, 'height', 'number', expandProperties.height);
        expandProperties.useCustomClose = entryOf(given, 'useCustomClose', 'boolean', expandProperties.useCustomClose);
    }

    function setResizeProperties(given) {
        const width = entryOf(given, 'width', 'number', null);
        const height = entryOf(given, 'height', 'number', null);
        if (width === null || height === null) {
            fail('width and height are numbers.', 'setResizeProperties');
            return;
        }
        const closePosition = entryOf(given, 'customClosePosition', 'string', 'top-right');
        if (!closePositions[closePosition]) {
            fail('customClosePosition is a corner, center, top-center or bottom-center.', 'setResizeProperties');
            return;
        }
        resizeProperties = {
            __proto__: null, width, height,
            offsetX: entryOf(given, 'offsetX', 'number', 0),
            offsetY: entryOf(given, 'offsetY', 'number', 0),
            customClosePosition: closePosition,
            allowOffscreen: entryOf(given, 'allowOffscreen', 'boolean', true),
        };
    }

    const mraid = {
        getVersion: () => '3.0',
        getPlacementType: () => 'interstitial',
        getState: () => state,
        isViewable: () => viewable, // deprecated by MRAID 3.0 in favour of exposureChange
        supports: feature => features[`${feature}`] === true,

        addEventListener: addListener,
        removeEventListener: removeListener,

        // In the page's points; the origin is the top left corner of the screen in the page's orientation.
        getCurrentPosition: () => copyOf(position),
        getDefaultPosition: () => copyOf(position), // an interstitial has one size
        getMaxSize: () => copyOfSize(screenSize),
        getScreenSize: () => copyOfSize(screenSize),
        getCurrentAppOrientation: () => ({ orientation: appOrientation.orientation, locked: appOrientation.locked }),
        getLocation: () => -1,

        getOrientationProperties: () => ({
            allowOrientationChange: orientationProperties.allowOrientationChange,
            forceOrientation: orientationProperties.forceOrientation,
        }),
        setOrientationProperties,
        getExpandProperties: () => ({
            width: expandProperties.width === null ? screenSize.width : expandProperties.width,
            height: expandProperties.height === null ? screenSize.height : expandProperties.height,
            useCustomClose: expandProperties.useCustomClose,
            isModal: true,
        }),
        setExpandProperties,
        getResizeProperties: () => resizeProperties && {
            width: resizeProperties.width, height: resizeProperties.height,
            offsetX: resizeProperties.offsetX, offsetY: resizeProperties.offsetY,
            customClosePosition: resizeProperties.customClosePosition,
            allowOffscreen: resizeProperties.allowOffscreen,
        },
        setResizeProperties,

        close: () => ask('close', []),
        // Also works before the ad is ready, for a creative that fails to load.
        unload: () => after(send('mraid.unload', []), () => {}, () => {}),
        useCustomClose: flag => ask('useCustomClose', [flag]), // deprecated by MRAID 3.0
        // These require a touch by the viewer within the last second.
        open: address => ask('open', [addressText(address)]),
        playVideo: address => ask('playVideo', [addressText(address)]),
        // a record, or the JSON text of one
        createCalendarEvent: event => ask('createCalendarEvent', [typeof event === 'string' ? read(event) : event]),
        // Always refused: an interstitial has a fixed size, and the kit does not store pictures.
        expand: address => ask('expand', [address === undefined ? null : addressText(address)]),
        resize: () => ask('resize', []),
        storePicture: address => ask('storePicture', [addressText(address)]),
    };

    const environment = {
        version: '3.0',
        sdk: 'Qoro Video Ad',
        sdkVersion: '0.1.0',
        appId: '',
        ifa: '', // device identifiers are not disclosed to pages
        limitAdTracking: true,
        coppa: false,
    };

    // -------------------------------------------------------------------------------------------------------- Globals

    // Configurable, so that a page may redefine the names: a script that declares "const mraid" takes the name over.
    const give = (name, value) =>
        defineProperty(window, name, { __proto__: null, value: freeze(value), enumerable: true, configurable: true });
    give('MRAID_ENV', environment);
    give('mraid', mraid);
    give('qoroPlayer', qoroPlayer);

    if (post) {
        const id = `${page}-mraid`;
        callbacks[id] = learn;
        listen();
        after(send('mraid.load', [id]), () => {}, () => {});
    }
})();
