// The explorer page: services, resources and objects of this process, live.
"use strict";
